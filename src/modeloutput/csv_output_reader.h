#pragma once
// The six comma-separated result files of version 6 ("Tellura 5"). One reader
// serves them all; a small table says, per file, how many header lines precede
// the rows and which field of a row goes into which output column.
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

struct tellura_outputs;

enum csv_target : unsigned { kCsvAnnual = 1, kCsvEndOfRun = 2 };

struct csv_field {
    const char* name;  // output column; every field after the time, in file order
    unsigned targets;  // kCsvAnnual and / or kCsvEndOfRun
};

struct csv_output_file {
    const char* fileName;  // "sb.cropC.csv", in the run directory
    int headerLines;       // lines before the first row
    std::vector<csv_field> fields;
};

const std::vector<csv_output_file>& csvOutputFiles();

// Reads one file: each row's year (floor of its first field) selects or makes
// the annual record; ends with "%ld years read, from %ld to %ld.\n".
bool readCsvOutputFile(const csv_output_file& file, const std::string& path, tellura_outputs& outputs,
                       message_sink& errors);

// All six files of a run; a missing file is reported and the others still read.
// False only when not one of them could be opened.
bool readCsvOutputs(const std::string& runDirectory, tellura_outputs& outputs, message_sink& errors);

}  // namespace sb
