#include "standin_options.h"

#include <cstdlib>
#include <cstring>
#include <set>

namespace standin {

const char* helpText() {
    return "tellura-standin: a STAND-IN for the Tellura model, for Soilbench's tests and demo.\n"
           "It is not the model: it reads and checks the input files Soilbench writes and writes\n"
           "outputs in the model's formats with simple numbers computed from the inputs.\n"
           "\n"
           "Model command lines (in the run directory):\n"
           "  release 1:    -s sb -n sb.bin -W sbNew.100\n"
           "  releases 2-5: -s sb -n sb   (or -n sb.bin)\n"
           "  release 6:    -s sbsite.100 -m sb.sch -f sbfix.100 -o sb -i sb.ini -pp .\n"
           "List utility: sb sb sb_outvars.txt  (also when started under a name containing\n"
           "\"list100\", e.g. the list100-standin link)\n"
           "\n"
           "Options of the stand-in:\n"
           "  --release N     imitate release N (also SB_STANDIN_RELEASE); otherwise taken from\n"
           "                  the command line (1, 6) or the schedule's shape (2 to 5)\n"
           "  --mode M        test mode (also SB_STANDIN_MODE): normal, hang, crash, crash=abort,\n"
           "                  silent, error, garbage, huge, slow=SECONDS\n"
           "  --strict YEAR   read the run directory as the real YEAR release does (2012 or 2008;\n"
           "                  also SB_STANDIN_STRICT), refuse what it refuses with its messages\n"
           "  --reference DIR that release's own sample set-up (also SB_STANDIN_REFERENCE): the\n"
           "                  order of names, line counts and columns are read from its files\n"
           "  --reference-outputs DIR  its sample outputs (also SB_STANDIN_REFERENCE_OUTPUTS);\n"
           "                  default: DIR with \"inputs\" replaced by \"outputs\"\n"
           "  --help          this text\n"
           "Layout of variables in the binary file: SB_STANDIN_LAYOUT, or\n"
           "the workbench's share/soilbench/binary-layouts/ (or SOILBENCH_DATA_DIR), or a built-in placement.\n";
}

int standin_options::releaseFromArguments() const {
    if (model.count("-W")) return 1;
    if (model.count("-m") || model.count("-f") || model.count("-i")) return 6;
    return 0;
}

std::string standin_options::arg(const char* flag) const {
    auto it = model.find(flag);
    return it == model.end() ? "" : it->second;
}

standin_options parseOptions(int argc, char** argv) {
    static const std::set<std::string> kModelFlags = {"-s", "-n", "-W", "-m", "-f", "-o", "-i", "-pp"};
    standin_options options;
    const char* name = argc > 0 ? std::strrchr(argv[0], '/') : nullptr;
    options.list100 = argc > 0 && std::strstr(name ? name + 1 : argv[0], "list100") != nullptr;
    if (const char* release = std::getenv("SB_STANDIN_RELEASE")) options.release = std::atoi(release);
    if (const char* mode = std::getenv("SB_STANDIN_MODE"); mode && *mode) options.mode = mode;
    if (const char* strict = std::getenv("SB_STANDIN_STRICT"); strict && *strict)
        options.strictYear = std::atoi(strict);
    if (const char* dir = std::getenv("SB_STANDIN_REFERENCE")) options.reference = dir;
    if (const char* dir = std::getenv("SB_STANDIN_REFERENCE_OUTPUTS")) options.referenceOutputs = dir;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        bool hasValue = i + 1 < argc;
        if (arg == "--help" || arg == "-h") {
            options.help = true;
        } else if (arg == "--release" && hasValue) {
            options.release = std::atoi(argv[++i]);
        } else if (arg == "--strict" && hasValue) {
            options.strictYear = std::atoi(argv[++i]);
        } else if (arg == "--reference" && hasValue) {
            options.reference = argv[++i];
        } else if (arg == "--reference-outputs" && hasValue) {
            options.referenceOutputs = argv[++i];
        } else if (arg == "--mode" && hasValue) {
            options.mode = argv[++i];
        } else if (kModelFlags.count(arg) && hasValue) {
            options.model[arg] = argv[++i];
        } else if (!arg.empty() && arg[0] != '-') {
            options.positional.push_back(arg);
        } else {
            options.problem = "unknown argument \"" + arg + "\"";
        }
    }
    // The list utility's own command line is three file names and no flags.
    if (options.model.empty() && options.positional.size() >= 3) options.list100 = true;
    if (options.release < 0 || options.release > 6) options.problem = "release must be 1 to 6";
    if (options.strictYear && options.strictYear != 2012 && options.strictYear != 2008)
        options.problem = "strict mode imitates the 2012 or the 2008 release";
    if (options.strictYear && options.reference.empty())
        options.problem = "strict mode needs the release's sample set-up (--reference or SB_STANDIN_REFERENCE)";
    return options;
}

}  // namespace standin
