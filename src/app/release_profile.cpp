#include "app/release_profile.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "app/name_pattern.h"
#include "app/text_file.h"
#include "app/text_format.h"

namespace sb {

namespace {

const std::vector<std::string> kParameterFiles = {"fix.100",  "site.100", "crop.100", "cult.100",
                                                  "fert.100", "fire.100", "graz.100", "harv.100",
                                                  "irri.100", "omad.100", "tree.100", "trem.100"};

const std::set<std::string> kWeatherColumns = {"day",  "month",  "year",   "doy",    "tmax",
                                               "tmin", "precip", "solrad", "rhumid", "windsp"};

const std::set<std::string> kConditions = {"tmax-form", "teff4-form"};

// Words of a profile line: blank-separated, a double-quoted word may hold blanks.
std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> out;
    size_t at = 0;
    while (at < text.size()) {
        while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
        if (at >= text.size()) break;
        if (text[at] == '"') {
            size_t close = text.find('"', at + 1);
            if (close == std::string_view::npos) close = text.size();
            out.emplace_back(text.substr(at + 1, close - at - 1));
            at = close + 1;
            continue;
        }
        size_t end = text.find_first_of(" \t", at);
        if (end == std::string_view::npos) end = text.size();
        out.emplace_back(text.substr(at, end - at));
        at = end;
    }
    return out;
}

bool readNumber(const std::string& word, double& value) {
    if (word.empty()) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtod(word.c_str(), &end);
    return *end == '\0' && errno == 0;
}

class profile_parser {
public:
    profile_parser(release_profile& profile, message_sink& errors) : profile_(profile), errors_(errors) {}

    void line(std::string_view raw, int number) {
        line_ = number;
        std::string_view text = trim(raw);
        if (text.empty() || text.front() == '#') return;
        if (text.front() == '[') {
            section(text);
            return;
        }
        if (section_.empty()) return problem("a line before the first section");
        if (section_ == "release") return releaseKey(text);
        if (section_ == "sitepar.in") return siteparLine(text);
        if (section_ == "outfiles.in") return outfilesLine(text);
        parameterLine(text);
    }

    void finish() {
        line_ = 0;
        for (const char* key : {"title", "version", "output-interval", "nlayer", "weather", "success"})
            if (!seen_.count(key)) problem(strprintf("no \"%s\" key in [release]", key));
        std::vector<std::string> required = profileParameterFiles();
        if (profile_.version == kDailyStepVersion) {
            required.push_back("sitepar.in");
            required.push_back("outfiles.in");
        }
        for (const std::string& file : required)
            if (!sections_.count(file)) problem("no [" + file + "] section");
    }

    bool ok() const { return ok_; }

private:
    void problem(const std::string& what) {
        ok_ = false;
        if (line_ > 0) errors_.errorf("ERROR, %s: %s.\n", profile_.where(line_).c_str(), what.c_str());
        else
            errors_.errorf("ERROR, release profile \"%s\" (%s): %s.\n", profile_.name.c_str(), profile_.path.c_str(),
                           what.c_str());
    }

    void section(std::string_view text) {
        if (text.back() != ']') return problem("a section name without its closing \"]\"");
        std::string name(trim(text.substr(1, text.size() - 2)));
        bool known = name == "release" || name == "sitepar.in" || name == "outfiles.in";
        for (const std::string& file : kParameterFiles) known = known || name == file;
        if (!known) return problem("unknown section [" + name + "]");
        if (!sections_.insert(name).second) return problem("a second [" + name + "] section");
        section_ = name;
        if (name != "release" && name != "sitepar.in" && name != "outfiles.in") profile_.parameterFiles[name];
    }

    void releaseKey(std::string_view text) {
        size_t equals = text.find('=');
        if (equals == std::string_view::npos) return problem("a line that is no \"key = value\"");
        std::string key(trim(text.substr(0, equals)));
        std::string value(trim(text.substr(equals + 1)));
        static const std::set<std::string> kRepeatable = {"failure", "extra-file", "daily-alias"};
        if (!kRepeatable.count(key) && !seen_.insert(key).second) return problem("a second \"" + key + "\" key");
        if (key == "title") profile_.title = value;
        else if (key == "version") versionKey(value);
        else if (key == "output-interval") intervalKey(value);
        else if (key == "nlayer") nlayerKey(value);
        else if (key == "weather") weatherKey(value);
        else if (key == "extra-file") extraFileKey(value);
        else if (key == "success") profile_.successLine = value;
        else if (key == "failure") profile_.failureLines.push_back(value);
        else if (key == "binary-layout") profile_.binaryLayout = value == "by-size" ? std::string() : value;
        else if (key == "binary-framing") framingKey(value);
        else if (key == "list-skip") profile_.listSkipText = value;
        else if (key == "daily-files") profile_.dailyFiles = words(value);
        else if (key == "daily-alias") aliasKey(value);
        else if (key == "annual-files") profile_.annualFiles = words(value);
        else problem("unknown key \"" + key + "\"");
        if (key == "success" && value.empty()) problem("an empty \"success\" line");
    }

    void versionKey(const std::string& value) {
        double number = 0;
        if (!readNumber(value, number) || number < 1 || number > 6 || number != static_cast<int>(number))
            return problem("version \"" + value + "\" is no version code 1 to 6");
        profile_.version = static_cast<int>(number);
    }
    void intervalKey(const std::string& value) {
        if (value == "months") profile_.interval = output_interval_form::months;
        else if (value == "years") profile_.interval = output_interval_form::years;
        else if (value == "years-decimal") profile_.interval = output_interval_form::years_decimal;
        else problem("output-interval \"" + value + "\" is none of months, years, years-decimal");
    }
    void nlayerKey(const std::string& value) {
        double number = 0;
        if (value == "soil") profile_.nlayer = nlayer_rule::soil;
        else if (value == "soils.in") profile_.nlayer = nlayer_rule::soils_in;
        else if (readNumber(value, number) && number >= 1 && number <= 10 && number == static_cast<int>(number)) {
            profile_.nlayer = nlayer_rule::fixed;
            profile_.nlayerCount = static_cast<int>(number);
        } else problem("nlayer \"" + value + "\" is none of soil, soils.in or a number of layers 1 to 10");
    }
    void weatherKey(const std::string& value) {
        if (value == "monthly") return;
        for (const std::string& column : words(value))
            if (!kWeatherColumns.count(column)) return problem("unknown weather column \"" + column + "\"");
        profile_.weatherColumns = words(value);
    }
    void extraFileKey(const std::string& value) {
        std::vector<std::string> w = words(value);
        double number = 0;
        if (w.size() != 4 || w[1] != "when" || !readNumber(w[3], number))
            return problem("extra-file takes \"FILE when COLUMN VALUE\"");
        profile_.extraFiles.push_back({w[0], w[2], number});
    }
    void framingKey(const std::string& value) {
        if (value == "any") profile_.framing = profile_framing::any;
        else if (value == "markers") profile_.framing = profile_framing::markers;
        else if (value == "lengths") profile_.framing = profile_framing::lengths;
        else problem("binary-framing \"" + value + "\" is none of any, markers, lengths");
    }
    void aliasKey(const std::string& value) {
        std::vector<std::string> w = words(value);
        if (w.size() != 2) return problem("daily-alias takes \"ALIAS NAME\"");
        profile_.dailyAliases[w[0]] = w[1];
    }

    // Reads "= v1 v2 ..." from position `at`; false (reported) on a word that is no number.
    bool fallbacks(const std::vector<std::string>& w, size_t at, std::vector<double>& values) {
        for (size_t i = at; i < w.size(); ++i) {
            double value = 0;
            if (!readNumber(w[i], value)) {
                problem("\"" + w[i] + "\" is no number");
                return false;
            }
            values.push_back(value);
        }
        if (values.empty()) problem("\"=\" without a value");
        return !values.empty();
    }

    void parameterLine(std::string_view text) {
        std::vector<profile_line>& lines = profile_.parameterFiles[section_];
        if (text.rfind("text", 0) == 0 && (text.size() == 4 || text[4] == ' ')) {
            profile_line entry;
            entry.text = std::string(text.size() > 5 ? text.substr(5) : std::string_view());
            entry.line = line_;
            if (entry.text.empty()) return problem("an empty text line");
            lines.push_back(std::move(entry));
            return;
        }
        std::vector<std::string> w = words(text);
        profile_line entry;
        entry.line = line_;
        std::string columnPattern;
        std::vector<double> values;
        size_t i = 1;
        for (; i < w.size(); ++i) {
            if (w[i] == "int") entry.integer = true;
            else if (w[i] == "keep") entry.keep = true;
            else if ((w[i] == "from" || w[i] == "when" || w[i] == "unless") && i + 1 < w.size()) {
                if (w[i] == "from") columnPattern = w[++i];
                else {
                    entry.negated = w[i] == "unless";
                    entry.condition = w[++i];
                    if (!kConditions.count(entry.condition))
                        return problem("unknown condition \"" + entry.condition + "\"");
                }
            } else if (w[i] == "=") {
                if (!fallbacks(w, i + 1, values)) return;
                break;
            } else return problem("\"" + w[i] + "\" is no option of a value line");
        }
        expandInto(lines, w[0], columnPattern, entry, values);
    }

    void expandInto(std::vector<profile_line>& lines, const std::string& pattern, const std::string& columnPattern,
                    const profile_line& entry, const std::vector<double>& values) {
        std::vector<std::string> names = expandNamePattern(pattern);
        std::vector<std::string> columns =
            columnPattern.empty() ? std::vector<std::string>(names.size()) : expandNamePattern(columnPattern);
        if (names.empty()) return problem("\"" + pattern + "\" is no name or name range");
        if (columns.size() != names.size())
            return problem("\"" + pattern + "\" and \"" + columnPattern + "\" name different numbers of values");
        if (values.size() > 1 && values.size() != names.size())
            return problem(
                strprintf("%zu values for the %zu names of \"%s\"", values.size(), names.size(), pattern.c_str()));
        for (size_t n = 0; n < names.size(); ++n) {
            profile_line expanded = entry;
            expanded.name = names[n];
            expanded.column = columns[n];
            if (!values.empty()) expanded.fallback = values.size() == 1 ? values[0] : values[n];
            lines.push_back(std::move(expanded));
        }
    }

    void siteparLine(std::string_view text) {
        profile_sitepar_line entry;
        entry.line = line_;
        size_t colon = text.find(" : ");
        if (colon != std::string_view::npos) {
            entry.comment = std::string(trim(text.substr(colon + 3)));
            text = text.substr(0, colon);
        }
        std::vector<std::string> w = words(text);
        if (w.size() < 2) return problem("a sitepar.in line needs a form and a name");
        if (!siteparForm(w[0], entry)) return problem("unknown sitepar.in form \"" + w[0] + "\"");
        size_t wanted = entry.form == sitepar_form::pair || entry.form == sitepar_form::pair_integer ? 2 : 1;
        size_t i = 1;
        for (; i < w.size() && entry.names.size() < wanted; ++i) entry.names.push_back(w[i]);
        if (entry.names.size() < wanted) return problem("a pair needs two names");
        for (; i < w.size(); ++i) {
            if (w[i] == "keep") entry.keep = true;
            else if (w[i] == "=") {
                if (!fallbacks(w, i + 1, entry.fallback)) return;
                if (entry.fallback.size() != entry.names.size()) return problem("one value per name after \"=\"");
                break;
            } else return problem("\"" + w[i] + "\" is no option of a sitepar.in line");
        }
        profile_.sitepar.push_back(std::move(entry));
    }

    static bool siteparForm(const std::string& word, profile_sitepar_line& entry) {
        if (word == "int") entry.form = sitepar_form::integer;
        else if (word == "whole") entry.form = sitepar_form::whole;
        else if (word == "real") entry.form = sitepar_form::real;
        else if (word.rfind("real:", 0) == 0 && word.size() == 6 && word[5] >= '0' && word[5] <= '9') {
            entry.form = sitepar_form::real;
            entry.decimals = word[5] - '0';
        } else if (word == "months") entry.form = sitepar_form::months;
        else if (word == "pair") entry.form = sitepar_form::pair;
        else if (word == "pair-int") entry.form = sitepar_form::pair_integer;
        else return false;
        return true;
    }

    void outfilesLine(std::string_view text) {
        std::vector<std::string> w = words(text);
        if (w[0] == "header") {
            profile_.outfilesHeader = std::string(trim(text.substr(6)));
            return;
        }
        if (w.size() < 2) return problem("an outfiles.in row needs a setting and a file");
        profile_outfile_row row;
        double number = 0;
        if (w[0].rfind("Outfile", 0) == 0 && readNumber(w[0].substr(7), number) && number >= 1 && number <= 28)
            row.setting = static_cast<int>(number);
        else if (w[0] != "off") return problem("\"" + w[0] + "\" is neither Outfile1 .. Outfile28 nor off");
        row.file = w[1];
        size_t at = text.find(w[1]) + w[1].size();
        row.description = std::string(trim(text.substr(at)));
        profile_.outfiles.push_back(std::move(row));
    }

    release_profile& profile_;
    message_sink& errors_;
    std::string section_;
    std::set<std::string> sections_;
    std::set<std::string> seen_;
    int line_ = 0;
    bool ok_ = true;
};

}  // namespace

const std::vector<profile_line>* release_profile::lines(const std::string& file) const {
    auto found = parameterFiles.find(file);
    return found == parameterFiles.end() ? nullptr : &found->second;
}

std::string release_profile::where(int line) const {
    if (line <= 0) return strprintf("release profile \"%s\" (%s)", name.c_str(), path.c_str());
    return strprintf("release profile \"%s\" (%s line %d)", name.c_str(), path.c_str(), line);
}

const std::vector<std::string>& profileParameterFiles() { return kParameterFiles; }

value_source chooseValueSource(const profile_line& line, bool hasPlace, bool hasKept) {
    if (line.keep) {
        if (hasKept) return value_source::kept;
        if (line.fallback) return value_source::fallback;
        return hasPlace ? value_source::place : value_source::none;
    }
    if (hasPlace) return value_source::place;
    if (hasKept) return value_source::kept;
    return line.fallback ? value_source::fallback : value_source::none;
}

bool parseReleaseProfile(const std::string& text, const std::string& path, release_profile& profile,
                         message_sink& errors) {
    profile = release_profile();
    profile.path = path;
    profile.name = std::filesystem::path(path).stem().string();
    profile_parser parser(profile, errors);
    int number = 0;
    forEachLine(text, [&](std::string_view line) { parser.line(line, ++number); });
    parser.finish();
    return parser.ok();
}

bool loadReleaseProfile(const std::string& path, release_profile& profile, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, cannot read release profile \"%s\".\n", path.c_str())))
        return false;
    return parseReleaseProfile(text, path, profile, errors);
}

}  // namespace sb
