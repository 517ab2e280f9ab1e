#pragma once
// A model release profile: how one release of the model reads its input files
// and writes its outputs. Releases differ from each other (and from the layout
// one version's documentation gives) in the order of the names in their
// parameter files, in line counts, in how the output interval is read, in what
// their consoles print; a profile says all of that as data, so that a release
// Soilbench has never seen can be driven by a profile file alone.
//
// Profiles are text files "<name>.profile" (data/profiles/README.md describes
// the format); the shipped ones are installed beside the program, users add
// their own in their profile folder. This is the parsed form; which database
// place a name is written from is decided by the writers (src/modelinput).
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

// One line of a parameter file section ([fix.100], [site.100], [crop.100], ...).
struct profile_line {
    std::string text;                // a "text" line: written as it stands; empty for a value line
    std::string name;                // the name the file gives the value, e.g. "ADEP(3)"
    std::string column;              // "from": the database place it is written from; empty: the name's own
    bool integer = false;            // "int": written as a whole number
    bool keep = false;               // "keep": the file's value stays with the record, not in the database's place
    std::optional<double> fallback;  // "= value": used when the project holds no value for the name
    std::string condition;           // "when"/"unless" condition: "tmax-form" or "teff4-form"; empty: always
    bool negated = false;            // "unless"
    int line = 0;                    // line of the profile file, for messages

    bool isText() const { return name.empty(); }
};

// How one line of sitepar.in is written.
enum class sitepar_form { integer, whole, real, months, pair, pair_integer };

struct profile_sitepar_line {
    sitepar_form form = sitepar_form::real;
    int decimals = 5;                // real: the usual decimals
    std::vector<std::string> names;  // one; two for a pair; the base name for months
    bool keep = false;
    std::vector<double> fallback;  // one per name, or none
    std::string comment;           // written after the value(s)
    int line = 0;
};

// One row of outfiles.in: the daily output file setting that switches it
// (1..28), or 0 for a row the release reads but no setting belongs to.
struct profile_outfile_row {
    int setting = 0;
    std::string file;
    std::string description;
};

enum class output_interval_form {
    months,         // whole months: "12"
    years,          // years with five decimals: "1.00000"
    years_decimal,  // years with a decimal point and the decimals it needs: "1.000", "0.0833"
};

enum class nlayer_rule {
    soil,      // the soil's own number of layers
    fixed,     // a fixed number (nlayerCount)
    soils_in,  // as many fix.100 layers (ADEP) as reach the bottom of soils.in
};

enum class profile_framing { any, markers, lengths };

// A file that must stand beside the schedule when a run-control column has a value.
struct profile_extra_file {
    std::string file;    // e.g. "nscale.dat"
    std::string column;  // Control Records column, e.g. "Ninput"
    double value = 0;    // the file is needed when the column holds this value
};

struct release_profile {
    std::string name;  // the file name without ".profile"
    std::string path;  // where it was read from
    std::string title;
    int version = 0;  // the Soilbench version (1..6) whose executables it serves
    output_interval_form interval = output_interval_form::months;
    nlayer_rule nlayer = nlayer_rule::soil;
    int nlayerCount = 0;
    std::vector<std::string> weatherColumns;  // daily weather file columns; empty: monthly weather
    std::vector<profile_extra_file> extraFiles;
    std::string successLine;                // the console line that ends a good run
    std::vector<std::string> failureLines;  // console lines by which the release refuses a run
    std::string binaryLayout;               // a layout file; empty: the layout with the record's size
    profile_framing framing = profile_framing::any;
    std::string listSkipText;                         // list utility console text before a name it does not know
    std::vector<std::string> dailyFiles;              // daily text outputs read, in order
    std::map<std::string, std::string> dailyAliases;  // header name -> the name it stands for
    std::vector<std::string> annualFiles;             // annual text outputs read

    std::map<std::string, std::vector<profile_line>> parameterFiles;  // "fix.100", "site.100", "crop.100", ...
    std::vector<profile_sitepar_line> sitepar;
    std::string outfilesHeader;
    std::vector<profile_outfile_row> outfiles;

    // The lines of a parameter file section; nullptr when the profile has none.
    const std::vector<profile_line>* lines(const std::string& file) const;
    // "release profile \"NAME\" (PATH line N)": how messages name a place in the profile.
    std::string where(int line) const;
};

// Where a value line's value comes from. A "keep" line: the value the record
// keeps, else the line's fallback, else the database's place. Any other line:
// the database's place, else a kept value (a name no column holds), else the
// fallback.
enum class value_source { place, kept, fallback, none };
value_source chooseValueSource(const profile_line& line, bool hasPlace, bool hasKept);

// The parameter file sections every profile has, and those of the daily-step
// version (4) only.
const std::vector<std::string>& profileParameterFiles();
inline constexpr int kDailyStepVersion = 4;

// Reads a profile from its text; `path` names it in messages and gives its
// name. False, with every problem found (naming the line), when the profile
// cannot be used: an unknown or missing key or section, a value that cannot
// be read.
bool parseReleaseProfile(const std::string& text, const std::string& path, release_profile& profile,
                         message_sink& errors);
bool loadReleaseProfile(const std::string& path, release_profile& profile, message_sink& errors);

}  // namespace sb
