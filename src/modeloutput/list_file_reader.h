#pragma once
// Reads the list file that the model's list utility made from the binary output
// ("sb.lis") into a control record's output records, block by block (the
// record's event blocks).
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

class output_variable_set;
struct tellura_event_block;
struct tellura_outputs;

// Matches the header against the variable set (whose current version becomes
// versionIndex), then reads each event block's rows: annual rows, or monthly rows
// when the extra list is wanted. Blocks already read stay filled on failure.
bool readListFile(output_variable_set& variables, const std::string& path, int versionIndex,
                  const std::vector<tellura_event_block>& blocks, tellura_outputs& outputs, message_sink& errors);

}  // namespace sb
