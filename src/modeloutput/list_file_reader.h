#pragma once
// Reads the list file that the model's list utility made from the binary output
// ("sb.lis") into a control record's output records, block by block.
#include <string>

namespace sb {

class output_variable_set;
class tellura_control_record;

// Matches the header against the variable set (whose current version becomes
// versionIndex), then reads each event block's rows: annual rows, or monthly rows
// when the extra list is wanted. Blocks already read stay filled on failure.
bool readListFile(output_variable_set& variables, const std::string& path, int versionIndex,
                  tellura_control_record& record, std::string& errors);

}  // namespace sb
