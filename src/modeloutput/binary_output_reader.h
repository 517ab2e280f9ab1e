#pragma once
// Reads the model's binary output ("sb.bin") straight into a control record's
// output records, block by block (the record's event blocks), without the list
// utility.
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

class binary_layout_catalogue;
struct release_profile;
struct tellura_event_block;
struct tellura_outputs;

// The layout is chosen by the file's record size among the catalogue's layouts
// for the version (loadBinaryLayouts in modeloutput/binary_layout.h); none is a
// failure that says how to add one. Array 1 (the model's state and annual accumulators) fills the
// end-of-run record where a variable is one of its columns; every array fills the
// year's or month's record where a variable is one of that record's columns (the
// model keeps most annual values in array 1, so leaving them out would leave the
// annual table nearly empty). Blocks already read stay filled on failure.
// With a release profile that names its release's layout and framing, the file
// must have that framing and the layout's record size, or the read fails
// saying which.
bool readBinaryOutput(const std::string& path, int versionIndex, const binary_layout_catalogue& layouts,
                      const std::vector<tellura_event_block>& blocks, tellura_outputs& outputs, message_sink& errors,
                      const release_profile* profile = nullptr);

// Whether a binary output file holds a whole record (a release that refused a
// run leaves it empty, or with its two framing bytes only).
bool binaryOutputHoldsRecord(const std::string& path);

// A binary output file on its own (no control record to say where blocks end):
// every record of the file as one block, monthly or annual. A quiet end after
// whole records is the file's normal end here, not a failure.
bool readWholeBinaryOutput(const std::string& path, int versionIndex, const binary_layout_catalogue& layouts,
                           bool monthly, tellura_outputs& outputs, message_sink& errors);

}  // namespace sb
