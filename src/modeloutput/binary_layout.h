#pragma once
// Where each model variable sits in the binary output's three value arrays.
// The placement belongs to the model build, not to us: the program ships the
// layouts of the releases it knows (share/soilbench/binary-layouts/), and users add the
// layouts of their own builds (the "BinaryLayouts" setting lists extra files).
//
// A layout file is tab- or blank-separated text, one variable per line:
//   block<TAB>index<TAB>name      e.g.  plot1	16	aglcis(1)
// block plot1/plot2/plot3 names array 1/2/3, index counts from 1. A first line
// "block index name" is a column header; blank lines and lines starting with
// '#' are skipped, and "# version N" ties the layout to model version index N
// (without it the layout serves any version). The arrays are as long as their
// highest index, so the record size follows from the file.
#include <array>
#include <string>
#include <vector>

#include "app/message_sink.h"

namespace sb {

struct binary_layout {
    std::string source;                             // file path
    std::string description;                        // from the index file, or the path
    int version = 0;                                // model version index; 0 = any
    std::array<std::vector<std::string>, 3> names;  // names[array][index - 1]; "" = unused

    int count(int array) const { return static_cast<int>(names[static_cast<size_t>(array)].size()); }
    // 4 bytes each for the time and the three arrays.
    long recordBytes() const { return 4L * (1 + count(0) + count(1) + count(2)); }
    // Position (in floats, time = 0) of array a (0..2) element i (0-based).
    int floatPosition(int array, int index) const;
};

bool loadBinaryLayout(const std::string& path, binary_layout& layout, message_sink& errors);

class binary_layout_catalogue {
public:
    // The layouts shipped with the program: the index file "layouts.tsv" in the
    // directory lists "file<TAB>version<TAB>description" per layout.
    bool loadShipped(const std::string& directory, message_sink& errors);
    bool addFile(const std::string& path, message_sink& errors);

    // The first layout of this version (or of any version) with this record size.
    const binary_layout* find(int versionIndex, long recordBytes) const;
    // "2432, 3212": the sizes the catalogue knows for a version; "" for none.
    std::string knownSizes(int versionIndex) const;
    // Why a binary file of this version and record size cannot be read, and
    // how to add the layout of its build (one line, "ERROR, ..." to "\n").
    std::string noLayoutMessage(const std::string& path, int versionIndex, long recordBytes) const;
    const std::vector<binary_layout>& layouts() const { return layouts_; }

    // binary-layouts/ in the data folder (see app/program_location.h).
    static std::string shippedDirectory();

private:
    std::vector<binary_layout> layouts_;
};

// The layouts every reader of binary output uses (runs, the command line's
// read-bin, the desktop's Read .BIN file): the user's own files (the
// "BinaryLayouts" setting) first, so that they win over a shipped layout of
// the same record size, then the shipped ones. A file that cannot be read is
// reported and left out; the others still serve.
binary_layout_catalogue loadBinaryLayouts(const std::vector<std::string>& userFiles, message_sink& errors);

}  // namespace sb
