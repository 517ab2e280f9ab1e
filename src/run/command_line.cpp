#include "run/command_line.h"

#include "app/text_format.h"

namespace sb {

std::string quoteArgument(const std::string& argument) {
    std::string quoted = "\"";
    size_t backslashes = 0;
    for (char c : argument) {
        if (c == '\\') {
            ++backslashes;
        } else {
            // Backslashes before a quote are doubled, and the quote itself escaped.
            if (c == '"') quoted.append(backslashes + 1, '\\');
            backslashes = 0;
        }
        quoted += c;
    }
    quoted.append(backslashes, '\\');  // so that the closing quote stays a quote
    return quoted + "\"";
}

std::string modelCommandLine(int version, const std::string& executable, bool visible) {
    const std::string exe = quoteArgument(executable);
    switch (version) {
        case 1:
            return exe + " -s sb -n sb.bin -W sbNew.100";
        case 2:
        case 3:
        case 4:
        case 5:
            return exe + (visible ? " -s sb -n sb.bin" : " -s sb -n sb");
        case 6:
            return exe + " -s sbsite.100 -m sb.sch -f sbfix.100 -o sb -i sb.ini -pp .";
        default:
            return "";
    }
}

std::string list100CommandLine(int version, const std::string& executable) {
    if (version < 1 || version > 5) return "";
    return quoteArgument(executable) + " sb sb sb_outvars.txt";
}

const char* staleBinaryFile(int version) { return version >= 1 && version <= 5 ? "sb.bin" : ""; }

bool splitCommandLine(const std::string& commandLine, std::vector<std::string>& arguments) {
    arguments.clear();
    std::string current;
    bool inQuotes = false, inArgument = false;
    size_t backslashes = 0;
    for (char c : commandLine) {
        if (c == '\\') {
            ++backslashes;
            continue;
        }
        // Backslashes count only before a quote: each pair is one backslash, and
        // an odd one makes the quote a character of the argument.
        const bool escapedQuote = c == '"' && backslashes % 2 == 1;
        current.append(c == '"' ? backslashes / 2 : backslashes, '\\');
        if (backslashes) inArgument = true;
        backslashes = 0;
        if (escapedQuote) {
            current += c;
            inArgument = true;
        } else if (c == '"') {
            inQuotes = !inQuotes;
            inArgument = true;  // "" is an empty argument
        } else if ((c == ' ' || c == '\t') && !inQuotes) {
            if (inArgument) arguments.push_back(current);
            current.clear();
            inArgument = false;
        } else {
            current += c;
            inArgument = true;
        }
    }
    current.append(backslashes, '\\');
    if (inArgument || backslashes) arguments.push_back(current);
    if (inQuotes || arguments.empty() || arguments[0].empty()) {
        arguments.clear();
        return false;
    }
    return true;
}

}  // namespace sb
