// Release profile files: a faulty one is refused as a whole with a message
// naming the profile and the line, a user's profile takes the place of a
// shipped one of the same name, and a run asks for a profile that serves its
// version.
#include <gtest/gtest.h>

#include "app/release_profile_catalogue.h"
#include "test_support.h"

using namespace sb;

namespace {

// A small valid profile, one line per entry (line numbers count from 1).
std::vector<std::string> smallProfile() {
    std::vector<std::string> lines = {"[release]",
                                      "title = Small",
                                      "version = 1",
                                      "output-interval = years",
                                      "nlayer = soil",
                                      "weather = monthly",
                                      "success = Execution success.",
                                      "[fix.100]",
                                      "ADEP(1..3) = 10 20 30"};
    for (const std::string& file : profileParameterFiles())
        if (file != "fix.100") lines.push_back("[" + file + "]");
    return lines;
}

std::string textOf(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

}  // namespace

TEST(ReleaseProfile, FaultyFilesAreRefusedNamingProfileAndLine) {
    const std::string path = "/p/small.profile";
    struct fault {
        int line;  // replaced (1-based); 0: the text is added at the end
        const char* text;
        const char* message;
    } faults[] = {
        {7, "", "ERROR, release profile \"small\" (/p/small.profile): no \"success\" key in [release].\n"},
        {7, "success = Execution success.\ncolour = blue",
         "ERROR, release profile \"small\" (/p/small.profile line 8): unknown key \"colour\".\n"},
        {4, "output-interval = weeks",
         "ERROR, release profile \"small\" (/p/small.profile line 4): output-interval \"weeks\" is none of months, "
         "years, years-decimal.\n"},
        {3, "version = 7",
         "ERROR, release profile \"small\" (/p/small.profile line 3): version \"7\" is no version code 1 to 6.\n"},
        {9, "ADEP(1..3) = 10 20",
         "ERROR, release profile \"small\" (/p/small.profile line 9): 2 values for the 3 names of \"ADEP(1..3)\".\n"},
        {9, "ADEP(1..3) bogus",
         "ERROR, release profile \"small\" (/p/small.profile line 9): \"bogus\" is no option of a value line.\n"},
        {0, "[site.200]", "ERROR, release profile \"small\" (/p/small.profile line 21): unknown section [site.200].\n"},
        {0, "[fix.100]", "ERROR, release profile \"small\" (/p/small.profile line 21): a second [fix.100] section.\n"},
    };
    release_profile good;
    sb::message_sink errors;
    ASSERT_TRUE(parseReleaseProfile(textOf(smallProfile()), path, good, errors)) << errors;
    ASSERT_EQ(good.lines("fix.100")->size(), 3u);
    EXPECT_EQ(*good.lines("fix.100")->at(2).fallback, 30.0);
    for (const fault& f : faults) {
        std::vector<std::string> lines = smallProfile();
        if (f.line > 0) lines[static_cast<size_t>(f.line - 1)] = f.text;
        else lines.push_back(f.text);
        release_profile profile;
        errors.clear();
        EXPECT_FALSE(parseReleaseProfile(textOf(lines), path, profile, errors)) << f.text;
        EXPECT_EQ(errors.text(), f.message);
    }
}

TEST(ReleaseProfile, UserProfilesTakeTheShippedOnesPlaceAndRunsNeedTheirVersion) {
    sbtest::temp_dir user;
    std::vector<std::string> lines = smallProfile();
    lines[1] = "title = Mine";
    sbtest::writeFile(user.file("tellura4-agricultural.profile"), textOf(lines));
    sbtest::writeFile(user.file("broken.profile"), "[release]\ntitle = Broken\n");
    release_profile_catalogue catalogue;
    sb::message_sink errors;
    EXPECT_FALSE(catalogue.load(std::string(SB_SHARE_DIR) + "/profiles", user.path(), errors));
    EXPECT_NE(errors.text().find("ERROR, release profile \"broken\" (" + user.file("broken.profile") +
                                 "): no \"version\" key in [release].\n"),
              std::string::npos)
        << errors;
    EXPECT_EQ(catalogue.find("broken"), nullptr);
    ASSERT_NE(catalogue.find("tellura4-agricultural"), nullptr);
    EXPECT_EQ(catalogue.find("tellura4-agricultural")->title, "Mine");

    errors.clear();
    EXPECT_EQ(chooseReleaseProfile(catalogue, "diurna-2012", 2, errors), nullptr);
    EXPECT_EQ(chooseReleaseProfile(catalogue, "gone", 4, errors), nullptr);
    EXPECT_EQ(errors.text().substr(0, errors.text().find('\n', errors.text().find('\n') + 1) + 1),
              "ERROR, release profile \"diurna-2012\" is for Diurna 4.5, not for Tellura 4 Original.\n"
              "ERROR, no release profile \"gone\" for Diurna 4.5.\n");
}
