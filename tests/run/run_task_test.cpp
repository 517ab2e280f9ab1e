// A record's run handed to a cluster node: the task order read back as it was
// written, damaged results refused naming the file, and a node that does not
// share the folder told apart from a failed run.
#include "run/run_task.h"

#include "standin_fixture.h"

#include "app/text_format.h"

#include <tuple>

namespace {

using sbtest::temp_dir;

sb::task_order sampleOrder(const temp_dir& dir) {
    sb::task_order order;
    order.id = 42;
    order.version = 4;
    order.model = "/opt/model dir/dd";
    order.listUtility = "/opt/model dir/list";
    order.runTimeoutMs = 90000;
    order.readBinaryOutput = true;
    order.wineCommand = "wine";
    order.saveDailyFirstYear = 1990;
    order.saveDailyLastYear = 1995;
    order.blockOrder = {3, 1};
    order.inputsDigest = std::string(64, 'a');
    order.marker = dir.file("marker");
    order.markerText = "host 12 2024-05-01T08:15:02.123Z";
    return order;
}

TEST(RunTask, OrderIsReadBackAsWritten) {
    temp_dir dir;
    const sb::task_order written = sampleOrder(dir);
    sb::message_sink errors;
    ASSERT_TRUE(sb::writeTaskOrder(dir.path(), written, errors)) << errors;
    sb::task_order read;
    ASSERT_TRUE(sb::readTaskOrder(dir.path(), read, errors)) << errors;
    auto fields = [](const sb::task_order& o) {
        return std::tuple(o.id, o.version, o.model, o.listUtility, o.runTimeoutMs, o.readBinaryOutput, o.wineCommand,
                          o.saveDailyFirstYear, o.saveDailyLastYear, o.blockOrder, o.inputsDigest, o.marker,
                          o.markerText);
    };
    EXPECT_EQ(fields(read), fields(written));
    // A path with a line end would break the file: it is refused, not written.
    sb::task_order broken = written;
    broken.model = "/opt/a\nversion=1";
    errors.clear();
    EXPECT_FALSE(sb::writeTaskOrder(dir.file("x"), broken, errors));
    EXPECT_EQ(errors.text(),
              "ERROR, the model \"/opt/a\nversion=1\" holds a line end: a task cannot be written for it.\n");
}

TEST(RunTask, DamagedResultsAreRefusedNamingTheFile) {
    temp_dir dir;
    const std::string path = dir.file(sb::kTaskResultFile);
    struct damaged {
        const char* text;
        const char* message;
    };
    const damaged cases[] = {
        {"state=good\nlog-bytes=3\nmessage-bytes=0\n\nab",
         "ERROR, the task result \"%s\" holds 2 bytes of run log "
         "and messages, not 3.\n"},
        {"state=good\nlog-bytes=3\nmessage-bytes=0\n", "ERROR, \"%s\" is cut short.\n"},
        {"state=splendid\nlog-bytes=0\nmessage-bytes=0\n\n",
         "ERROR, the task result \"%s\" names no known end: \"splendid\".\n"},
        {"state=good\nlog-bytes=x\nmessage-bytes=0\n\n",
         "ERROR, \"%s\" has no whole number from 0 to 268435456 for \"log-bytes\".\n"},
        {"state good\n\n", "ERROR, line 1 of \"%s\" is not \"key=value\".\n"},
        {"state=good\nlog-bytes=0\nmessages=warning:2,loud:1\n\nabc",
         "ERROR, the task result \"%s\" lists a message \"loud:1\" that is not a severity and its length in "
         "bytes.\n"},
        {"state=good\nlog-bytes=1\nmessages=error:3\n\nabc",
         "ERROR, the task result \"%s\" holds 3 bytes of run log and messages, not 4.\n"},
    };
    for (const damaged& c : cases) {
        SCOPED_TRACE(c.text);
        sbtest::writeFile(path, c.text);
        sb::task_result result;
        sb::message_sink errors;
        EXPECT_FALSE(sb::readTaskResult(dir.path(), result, errors));
        std::string expected = c.message;
        expected.replace(expected.find("%s"), 2, path);
        EXPECT_EQ(errors.text(), expected);
    }
    // A whole result keeps the run log and the messages apart, byte for byte,
    // each message with its severity (an error not worded "ERROR" included).
    sb::task_result written{sb::run_state::timedOut, "s", "e", "node7", "log\r\nline", {}};
    written.messages.warning("WARNING, x,y:1\n");
    written.messages.error("Process interrupted at user-defined time limit.\n");
    written.messages.note("ERROR, a note\n");
    sb::message_sink errors;
    ASSERT_TRUE(sb::writeTaskResult(dir.path(), written, errors)) << errors;
    sb::task_result read;
    ASSERT_TRUE(sb::readTaskResult(dir.path(), read, errors)) << errors;
    EXPECT_EQ(read.state, sb::run_state::timedOut);
    EXPECT_EQ(read.host, "node7");
    EXPECT_EQ(read.runLog, written.runLog);
    EXPECT_EQ(read.messages, written.messages);
    // A result written when the messages were one text: their severity follows the run's end.
    for (const char* state : {"good", "failed"}) {
        sbtest::writeFile(path, sb::strprintf("state=%s\nlog-bytes=1\nmessage-bytes=2\n\nLm\n", state));
        ASSERT_TRUE(sb::readTaskResult(dir.path(), read, errors)) << errors;
        EXPECT_EQ(read.messages.messages(),
                  (std::vector<sb::message>{
                      {*state == 'g' ? sb::message_severity::warning : sb::message_severity::error, "m\n"}}));
    }
}

// The marker is missing or holds another submission's text: the task ends with
// its own status and writes no result (there is nobody to read one).
TEST(RunTask, ANodeWithoutTheMarkerEndsWithItsOwnStatus) {
    temp_dir dir;
    const sb::task_order order = sampleOrder(dir);
    sb::message_sink errors;
    ASSERT_TRUE(sb::writeTaskOrder(dir.path(), order, errors)) << errors;
    for (const char* marker : {"", "another submission"}) {
        SCOPED_TRACE(marker);
        if (*marker) sbtest::writeFile(order.marker, marker);
        errors.clear();
        EXPECT_EQ(sb::runTask(dir.path(), errors), sb::kTaskNotSharedStatus);
        EXPECT_NE(errors.text().find("ERROR, the run folder \"" + dir.path() + "\" is not shared with this host ("),
                  std::string::npos)
            << errors;
        EXPECT_FALSE(sb::hasTaskResult(dir.path()));
    }
    // With the marker there, the run's end (here: no model to start) is the result's.
    sbtest::writeFile(order.marker, order.markerText);
    errors.clear();
    EXPECT_EQ(sb::runTask(dir.path(), errors), 0) << errors;
    sb::task_result result;
    ASSERT_TRUE(sb::readTaskResult(dir.path(), result, errors)) << errors;
    EXPECT_EQ(result.state, sb::run_state::failed);
    ASSERT_FALSE(result.messages.empty());
    EXPECT_EQ(result.messages.messages().front().severity, sb::message_severity::error);
    EXPECT_THAT(result.messages.text(), HasSubstr("Unable to create process"));
}

}  // namespace
