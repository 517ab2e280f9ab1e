#pragma once
// The version the programs report (soilbench --version, the About box). It is
// fixed when the build is configured: the project's version, the git
// description of the checkout and the date of its sources, never the time of
// the build, so that two builds of one commit give identical programs.
#include <string>

namespace sb {

// "0.1.0": the released version number.
std::string programVersionNumber();
// "0.1.0 (git 1a2b3c4)", or the number alone when built outside a checkout.
std::string programVersion();
// "2025-03-14": the date of the sources built, or "" when unknown.
std::string programSourceDate();

}  // namespace sb
