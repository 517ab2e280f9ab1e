#include "output_test_files.h"

#include <cstring>

#include "app/text_format.h"
#include "db/database_maker.h"

namespace sbtest {

std::unique_ptr<sb::database> makeOutputProject(const temp_dir& dir) {
    sb::message_sink errors;
    std::string path = dir.file("outputs.db");
    EXPECT_TRUE(sb::database::create(path, errors)) << errors;
    auto db = sb::database::open(path, errors);
    if (!db) return nullptr;
    EXPECT_TRUE(sb::database_maker(*db).createAllTables(errors)) << errors;
    return db;
}

std::vector<sb::tellura_event_block> blocksOf(const std::vector<block_shape>& shapes) {
    std::vector<sb::tellura_event_block> blocks;
    int16_t number = 1;
    for (const auto& shape : shapes) {
        sb::tellura_event_block block;
        block.blockNumber = number++;
        block.lastYear = static_cast<int16_t>(shape.lastYear);
        block.outputInterval = shape.outputInterval;
        blocks.push_back(block);
    }
    return blocks;
}

sb::tellura_control_record recordWithBlocks(const std::vector<block_shape>& blocks) {
    sb::tellura_control_record record;
    record.blocks = blocksOf(blocks);
    return record;
}

std::string listHeader(const list_file_content& file) {
    // Wide: names start 5 columns into fields 17-32, 33-48, ... (the rows' values
    // end 5 columns before their field does).
    std::string out = file.narrow ? sb::strprintf("%7s  ", "time") : sb::strprintf("%11s     ", "time");
    for (const auto& name : file.names)
        out +=
            file.narrow ? sb::strprintf("%15s", name.c_str()) : sb::strprintf("     %-11s", name.substr(0, 11).c_str());
    return out;
}

std::string listRow(const list_file_content& file, double time, const std::vector<double>& values) {
    std::string out = file.narrow ? sb::strprintf("%7.2f", time) : sb::strprintf("%11.2f", time);
    for (double v : values) out += file.narrow ? sb::strprintf("%15.4f", v) : sb::strprintf("     %11.4f", v);
    return out;
}

std::string listFile(const list_file_content& file) {
    std::string out = listHeader(file) + "\n\n";
    for (size_t r = 0; r < file.times.size(); ++r) out += listRow(file, file.times[r], file.values[r]) + "\n";
    return out;
}

std::vector<unsigned char> binaryRecord(float time, const std::vector<float>& values) {
    std::vector<unsigned char> bytes(4 * (1 + values.size()));
    std::memcpy(bytes.data(), &time, 4);
    for (size_t i = 0; i < values.size(); ++i) std::memcpy(bytes.data() + 4 * (i + 1), &values[i], 4);
    return bytes;
}

std::string byteMarkedFile(const std::vector<std::vector<unsigned char>>& records, bool endByte) {
    std::string out(1, static_cast<char>(75));
    for (const auto& record : records) {
        size_t done = 0;
        do {
            size_t piece = std::min<size_t>(128, record.size() - done);
            bool more = done + piece < record.size();
            unsigned char marker = more ? 129 : static_cast<unsigned char>(piece);
            out += static_cast<char>(marker);
            out.append(reinterpret_cast<const char*>(record.data() + done), piece);
            out += static_cast<char>(marker);
            done += piece;
        } while (done < record.size());
    }
    if (endByte) out += static_cast<char>(130);
    return out;
}

std::string lengthMarkedFile(const std::vector<std::vector<unsigned char>>& records) {
    std::string out;
    for (const auto& record : records) {
        uint32_t n = static_cast<uint32_t>(record.size());
        char marker[4] = {static_cast<char>(n & 0xff), static_cast<char>((n >> 8) & 0xff),
                          static_cast<char>((n >> 16) & 0xff), static_cast<char>((n >> 24) & 0xff)};
        out.append(marker, 4);
        out.append(reinterpret_cast<const char*>(record.data()), record.size());
        out.append(marker, 4);
    }
    return out;
}

std::string layoutText(const std::vector<std::vector<std::string>>& names, int version) {
    std::string out = version ? sb::strprintf("# version %d\n", version) : "";
    out += "block\tindex\tname\n";
    for (size_t a = 0; a < names.size(); ++a)
        for (size_t i = 0; i < names[a].size(); ++i)
            out += sb::strprintf("plot%zu\t%zu\t%s\n", a + 1, i + 1, names[a][i].c_str());
    return out;
}

}  // namespace sbtest
