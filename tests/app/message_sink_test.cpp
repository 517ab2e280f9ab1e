// Messages keep their severity beside their exact text; the text is what users see.
#include "app/message_sink.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using sb::message_severity;

// A sink that shows messages as they come, as the command line's and the desktop's do.
class echoing_sink : public sb::message_sink {
public:
    std::string shown;

protected:
    void received(const sb::message& m) override {
        shown += "[" + std::to_string(static_cast<int>(m.severity)) + "]" + m.text;
    }
};

TEST(MessageSink, KeepsTextWholeAndTellsErrorsBySeverityNotByWording) {
    struct step {
        message_severity severity;
        std::string text;
    };
    struct {
        std::vector<step> steps;
        std::string text;
        bool errors;
        size_t kept;
    } cases[] = {
        {{}, "", false, 0},
        {{{message_severity::warning, "WARNING, Initial Crop is not in crop list.\n"}},
         "WARNING, Initial Crop is not in crop list.\n",
         false,
         1},
        // The wording says nothing: a note that reads like an error is a note, and an error may read any way.
        {{{message_severity::note, "ERROR count: 0\n"}, {message_severity::error, "Unable to open table X\n"}},
         "ERROR count: 0\nUnable to open table X\n",
         true,
         2},
        // A message without a line end stays as it came, and an empty one is none.
        {{{message_severity::error, ""}, {message_severity::note, "12 years read"}}, "12 years read", false, 1},
    };
    for (const auto& c : cases) {
        sb::message_sink sink;
        for (const step& s : c.steps) sink.add(s.severity, s.text);
        EXPECT_EQ(sink.text(), c.text);
        EXPECT_EQ(sink.hasErrors(), c.errors) << c.text;
        EXPECT_EQ(sink.messages().size(), c.kept);
        std::ostringstream printed;
        printed << sink;
        EXPECT_EQ(printed.str(), c.text);
    }
}

TEST(MessageSink, PassesMessagesOnWithTheirSeveritiesAndFormatsLikePrintf) {
    sb::message_sink step;
    step.warningf("WARNING, duplicate year cannot be inserted into table [%s] ID=%ld\n", "Annual", 7L);
    EXPECT_FALSE(step.addOutcome(false, "Other error: 80004005\n"));
    EXPECT_TRUE(step.addOutcome(true, "Record saved over another user's save.\n"));

    echoing_sink whole;
    whole.notef("%d records read.\n", 3);
    whole.add(step);
    EXPECT_EQ(whole.text(),
              "3 records read.\nWARNING, duplicate year cannot be inserted into table [Annual] ID=7\n"
              "Other error: 80004005\nRecord saved over another user's save.\n");
    EXPECT_EQ(whole.shown,
              "[0]3 records read.\n[1]WARNING, duplicate year cannot be inserted into table [Annual] "
              "ID=7\n[2]Other error: 80004005\n[1]Record saved over another user's save.\n");
    EXPECT_TRUE(whole.hasErrors());
    whole.clear();
    EXPECT_TRUE(whole.empty());
    EXPECT_FALSE(whole.hasErrors());
}

}  // namespace
