#include "run/command_line.h"

#include "app/text_format.h"

namespace sb {

std::string modelCommandLine(int version, const std::string& executable, bool visible) {
    const char* exe = executable.c_str();
    switch (version) {
        case 1:
            return strprintf("\"%s\" -s sb -n sb.bin -W sbNew.100", exe);
        case 2:
        case 3:
        case 4:
        case 5:
            return visible ? strprintf("\"%s\" -s sb -n sb.bin", exe) : strprintf("\"%s\" -s sb -n sb", exe);
        case 6:
            return strprintf("\"%s\" -s sbsite.100 -m sb.sch -f sbfix.100 -o sb -i sb.ini -pp .", exe);
        default:
            return "";
    }
}

std::string list100CommandLine(int version, const std::string& executable) {
    if (version < 1 || version > 5) return "";
    return strprintf("\"%s\" sb sb sb_outvars.txt", executable.c_str());
}

const char* staleBinaryFile(int version) { return version >= 1 && version <= 5 ? "sb.bin" : ""; }

bool splitCommandLine(const std::string& commandLine, std::vector<std::string>& arguments) {
    arguments.clear();
    std::string current;
    bool inQuotes = false, inArgument = false;
    for (char c : commandLine) {
        if (c == '"') {
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
    if (inArgument) arguments.push_back(current);
    if (inQuotes || arguments.empty() || arguments[0].empty()) {
        arguments.clear();
        return false;
    }
    return true;
}

}  // namespace sb
