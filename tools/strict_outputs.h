#pragma once
// The outputs of a strict run, in the imitated release's own shapes: binary
// records of its array sizes and framing with its variable positions, and the
// daily text files with the columns of its sample outputs.
#include "binary_layout.h"
#include "standin_values.h"
#include "strict_release.h"

#include <string>

namespace standin {

// The array sizes a "block<TAB>index<TAB>name" file implies (highest index of each array).
bool layoutCounts(const std::string& path, array_counts& counts, std::string& errors);

// Drops the zero before the decimal point of every number ("  0.1051" -> "   .1051",
// "-0.5" -> " -.5"), as the release's Fortran text output does; widths are kept.
std::string withoutLeadingZeros(std::string line);

bool writeStrictBinary(const run_inputs& inputs, const release_behaviour& release, const reference_setup& reference,
                       const std::string& path, std::string& console, std::string& errors);
bool writeStrictTextFiles(const run_inputs& inputs, const release_behaviour& release, const reference_setup& reference,
                          std::string& errors);
// What a refused run leaves behind: an empty binary file, or one holding only
// the framing's start and end bytes.
void writeRefusedBinary(const release_behaviour& release, const std::string& path);

}  // namespace standin
