#pragma once
// Builders of model output files for the output reader tests: list files in
// the list utility's layouts, binary files in both framings, control records
// with chosen event blocks.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "db/database.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_control_record.h"
#include "test_support.h"

namespace sbtest {

// A project with every table, "outputs.db" in `dir`.
std::unique_ptr<sb::database> makeOutputProject(const temp_dir& dir);

struct block_shape {
    int lastYear;
    float outputInterval;  // months
};

// Event blocks numbered from 1 with these last years and output intervals, and
// a record whose event blocks are exactly these (no blocks for an empty list).
std::vector<sb::tellura_event_block> blocksOf(const std::vector<block_shape>& shapes);
sb::tellura_control_record recordWithBlocks(const std::vector<block_shape>& blocks);

// A list file as the utility writes it: "time" right-aligned in the time field,
// names 5 columns into their field (wide) or right-aligned (narrow), a blank
// second line, rows of the time and values.
struct list_file_content {
    bool narrow = false;  // version index 2's layout
    std::vector<std::string> names;
    std::vector<double> times;
    // values[row][column]
    std::vector<std::vector<double>> values;
};
std::string listHeader(const list_file_content& file);
std::string listRow(const list_file_content& file, double time, const std::vector<double>& values);
std::string listFile(const list_file_content& file);

// A logical record: time then the floats.
std::vector<unsigned char> binaryRecord(float time, const std::vector<float>& values);
// The 1-byte-marker framing: format byte 75, physical records of at most 128
// bytes, then the end byte 130 (when endByte is true).
std::string byteMarkedFile(const std::vector<std::vector<unsigned char>>& records, bool endByte = true);
// 4-byte little-endian length before and after each record.
std::string lengthMarkedFile(const std::vector<std::vector<unsigned char>>& records);

// A layout file text: every name of names[a] at index 1.. of plot a+1.
std::string layoutText(const std::vector<std::vector<std::string>>& names, int version = 0);

}  // namespace sbtest
