#pragma once
// Command lines of the model and its list utility, and their splitting into
// arguments. Processes start without a shell, so the text is split here,
// honouring double quotes, exactly as the model's own runtime would split it.
#include <string>
#include <vector>

namespace sb {

// "" for a version code outside 1..6. `visible` picks the second form that
// releases 2 to 5 take in a visible run (the binary name with ".bin").
std::string modelCommandLine(int version, const std::string& executable, bool visible);
// "" for codes without a list utility (6 and codes outside 1..6).
std::string list100CommandLine(int version, const std::string& executable);
// The binary output file deleted before the model starts; "" when none (code 6).
const char* staleBinaryFile(int version);

// The argument in double quotes, read back whole by splitCommandLine whatever it
// holds: a quote in it is escaped with a backslash, as are backslashes before one.
std::string quoteArgument(const std::string& argument);

// Splits at blanks outside double quotes; the quotes themselves are removed.
// \" is a quote inside an argument and \\ before a quote one backslash; other
// backslashes are as they stand.
// False (and no arguments) for an empty command line or an unclosed quote.
bool splitCommandLine(const std::string& commandLine, std::vector<std::string>& arguments);

}  // namespace sb
