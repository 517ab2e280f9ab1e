#pragma once
// Where each output variable sits in the three value arrays of a binary
// output record, per release. Read from "block<TAB>index<TAB>name" files
// (block plot1/plot2/plot3 = arrays 1/2/3, index from 1); when no file is
// found the stand-in uses its own placement of the workbench's variables.
#include <string>
#include <vector>

namespace standin {

struct array_counts {
    int count1, count2, count3;
    int recordBytes() const { return 4 * (1 + count1 + count2 + count3); }
};

array_counts arrayCounts(int release);
// The release whose record has this many bytes (3 for 2360, shared with 5); 0 if none.
int releaseOfRecordBytes(int bytes);

struct layout_entry {
    int array = 1;  // 1 to 3
    int index = 1;  // from 1
    std::string name;
    int offset(const array_counts& counts) const;  // float position in the record, after the time
};

class binary_layout {
public:
    // Looks for SB_STANDIN_LAYOUT, then in the workbench's share/soilbench/binary-layouts/
    // the release's first file in layouts.tsv, version<N>.tsv or release<N>.tsv;
    // falls back to the built-in placement.
    bool load(int release, const std::string& exeDir, std::string& errors);
    bool readFile(const std::string& path, const array_counts& counts, std::string& errors);
    void useDefault(const array_counts& counts);
    const std::vector<layout_entry>& entries() const { return entries_; }
    const layout_entry* find(const std::string& name) const;  // case ignored
    const std::string& source() const { return source_; }

private:
    std::vector<layout_entry> entries_;
    std::string source_;
};

}  // namespace standin
