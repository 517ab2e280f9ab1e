#include "modeloutput/binary_output_reader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "app/release_profile.h"
#include "app/text_format.h"
#include "modeloutput/binary_layout.h"
#include "modeloutput/binary_record_reader.h"
#include "modeloutput/output_field_target.h"
#include "modeloutput/output_soil_layer_target.h"
#include "modeloutput/output_time.h"
#include "modeloutput/output_value_parse.h"
#include "modeloutput/tellura_output.h"
#include "records/tellura_event_block.h"

namespace sb {

namespace {

// One variable of the layout and the columns it fills.
struct placement {
    int position;  // float index in the record
    std::string name;
    int endOfRunColumn;  // -1: not an end-of-run column (or not in array 1)
    output_field_target periodTarget;
    soil_layer_target soilLayer;  // array 1 only: a layer's end state
};

std::vector<placement> placementsFor(const binary_layout& layout, bool monthly) {
    const auto& endTable = tableDef(table_id::output);
    const auto& periodTable = tableDef(monthly ? table_id::output_monthly : table_id::output_annual);
    std::vector<placement> out;
    for (int array = 0; array < 3; ++array) {
        const auto& names = layout.names[static_cast<size_t>(array)];
        for (size_t i = 0; i < names.size(); ++i) {
            if (names[i].empty()) continue;
            placement p{layout.floatPosition(array, static_cast<int>(i)),
                        names[i],
                        -1,
                        resolveOutputField(periodTable, names[i], monthly),
                        {}};
            if (array == 0) {
                p.endOfRunColumn = resolveOutputField(endTable, names[i], false).column;
                p.soilLayer = resolveSoilLayerField(names[i]);
            }
            if (p.endOfRunColumn >= 0 || p.periodTarget.placed() || p.soilLayer.placed()) out.push_back(std::move(p));
        }
    }
    return out;
}

// The state array has room for more layers than a site's profile uses; a
// layer that holds nothing (zeros or no value) at the end is not one of the
// site's and is not kept.
void dropEmptySoilLayers(tellura_outputs& outputs) {
    auto& layers = outputs.soilLayers;
    layers.erase(std::remove_if(layers.begin(), layers.end(),
                                [](const soil_layer_output& layer) {
                                    for (int c = 2; c < layer.columnCount(); ++c)
                                        if (!layer.isMissing(c) && layer.number(c) != 0.0) return false;
                                    return true;
                                }),
                 layers.end());
}

float floatAt(const std::vector<unsigned char>& record, int position) {
    uint32_t bits = static_cast<uint32_t>(record[4 * position]) | static_cast<uint32_t>(record[4 * position + 1]) << 8 |
                    static_cast<uint32_t>(record[4 * position + 2]) << 16 |
                    static_cast<uint32_t>(record[4 * position + 3]) << 24;
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

class binary_block_reader {
public:
    binary_block_reader(binary_record_reader& reader, const binary_layout* layout, long recordBytes,
                        tellura_outputs& outputs)
        : reader_(reader), bytes_(recordBytes), outputs_(outputs) {
        if (layout) {
            annual_ = placementsFor(*layout, false);
            monthly_ = placementsFor(*layout, true);
        }
    }

    bool readBlock(const tellura_event_block& block, message_sink& errors) {
        bool monthly = block.outputInterval < 12.0f;
        output_year_span span;
        if (bytes_ < 4) {  // a file that holds no record at all
            span.appendRecordsMessage(errors);
            return false;
        }
        bool ok = true;
        float lastTime = -HUGE_VALF;
        for (bool last = false; !last;) {
            if (!reader_.readRecord(bytes_, record_, error_, errors)) {
                // A file that ends where a block's last year begins is whole
                // for a build that writes no record for the last year; a file
                // that ends sooner (or is damaged) is not.
                ok = !error_ && lastTime >= static_cast<float>(block.lastYear);
                break;
            }
            float time = floatAt(record_, 0);
            lastTime = time;
            if (!std::isfinite(time)) {
                errors.errorf("ERROR, binary output record %ld has no valid time.\n", reader_.recordsRead());
                ok = false;
                break;
            }
            last = closesBlock(time, block.lastYear);
            table_record* target = nullptr;
            int month = 0;
            long year = 0;
            if (monthly) {
                output_year_month ym = monthlyTime(time);
                target = &outputs_.monthlyFor(ym.year, ym.month);
                month = ym.month;
                year = ym.year;
            } else {
                year = annualYear(time);
                target = &outputs_.annualFor(static_cast<int>(year));
            }
            span.see(year);
            fill(monthly ? monthly_ : annual_, *target, month, errors);
            ++span.count;
        }
        span.appendRecordsMessage(errors);
        return ok;
    }

    void finish(message_sink& errors) const { badValues_.finish(errors); }

private:
    void fill(const std::vector<placement>& placements, table_record& target, int month, message_sink& errors) {
        for (const auto& p : placements) {
            float value = floatAt(record_, p.position);
            if (!std::isfinite(value)) {
                badValues_.note(reader_.recordsRead(), std::isnan(value) ? "NaN" : "Infinity", p.name, errors);
                continue;
            }
            if (p.endOfRunColumn >= 0) storeOutputValue(outputs_.endOfRunRecord(), p.endOfRunColumn, value);
            if (p.periodTarget.placed() && p.periodTarget.takesMonth(month))
                storeOutputValue(target, p.periodTarget.column, value);
            // Each record overwrites the layers: the last one read leaves the end state.
            if (p.soilLayer.placed())
                storeOutputValue(outputs_.soilLayerFor(p.soilLayer.layer), p.soilLayer.column, value);
        }
    }

    binary_record_reader& reader_;
    long bytes_;
    tellura_outputs& outputs_;
    std::vector<placement> annual_, monthly_;
    std::vector<unsigned char> record_;
    bool error_ = false;
    bad_value_log badValues_{"binary output file", "record"};
};

}  // namespace

namespace {

const char* framingText(binary_framing framing) {
    return framing == binary_framing::byte_markers ? "1-byte record markers" : "4-byte record lengths";
}

// The framing and layout the release profile gives its release, checked against the file.
bool profileLayout(const std::string& path, const binary_record_reader& reader, const binary_layout_catalogue& layouts,
                   const release_profile& profile, const binary_layout*& layout, message_sink& errors) {
    const binary_framing said = profile.framing == profile_framing::markers   ? binary_framing::byte_markers
                                : profile.framing == profile_framing::lengths ? binary_framing::length_markers
                                                                              : reader.framing();
    if (said != reader.framing()) {
        errors.errorf("ERROR, binary output file \"%s\" has %s, but %s says its release writes %s.\n", path.c_str(),
                      framingText(reader.framing()), profile.where(0).c_str(), framingText(said));
        return false;
    }
    if (profile.binaryLayout.empty()) return true;
    for (const binary_layout& known : layouts.layouts())
        if (std::filesystem::path(known.source).filename() == profile.binaryLayout) layout = &known;
    if (!layout) {
        errors.errorf("ERROR, the binary layout \"%s\" of %s is not among the binary layout files.\n",
                      profile.binaryLayout.c_str(), profile.where(0).c_str());
        return false;
    }
    if (layout->recordBytes() != reader.firstRecordBytes()) {
        errors.errorf(
            "ERROR, binary output file \"%s\" has records of %ld bytes, but the layout \"%s\" of %s has "
            "%ld.\n",
            path.c_str(), reader.firstRecordBytes(), profile.binaryLayout.c_str(), profile.where(0).c_str(),
            layout->recordBytes());
        layout = nullptr;
        return false;
    }
    return true;
}

}  // namespace

bool binaryOutputHoldsRecord(const std::string& path) {
    binary_record_reader reader;
    message_sink ignored;
    int firstByte = 0;
    return reader.open(path, ignored) && reader.readFirstByte(firstByte) && reader.detectFraming(ignored) &&
           reader.firstRecordBytes() > 0;
}

bool readBinaryOutput(const std::string& path, int versionIndex, const binary_layout_catalogue& layouts,
                      const std::vector<tellura_event_block>& blocks, tellura_outputs& outputs, message_sink& errors,
                      const release_profile* profile) {
    binary_record_reader reader;
    if (!reader.open(path, errors)) return false;
    int firstByte = 0;
    if (!reader.readFirstByte(firstByte)) {
        errors.error("ERROR, binary output file is empty: " + path + "\n");
        return false;
    }
    if (blocks.empty()) return true;
    if (!reader.detectFraming(errors)) return false;
    const binary_layout* layout = nullptr;
    if (profile && reader.firstRecordBytes() > 0 && !profileLayout(path, reader, layouts, *profile, layout, errors))
        return false;
    if (!layout && reader.firstRecordBytes() > 0) {
        layout = layouts.find(versionIndex, reader.firstRecordBytes());
        if (!layout) {
            errors.error(layouts.noLayoutMessage(path, versionIndex, reader.firstRecordBytes()));
            return false;
        }
    }
    binary_block_reader blockReader(reader, layout, reader.firstRecordBytes(), outputs);
    bool ok = true;
    for (const auto& block : blocks)
        if (!blockReader.readBlock(block, errors)) {
            ok = false;
            break;
        }
    blockReader.finish(errors);
    dropEmptySoilLayers(outputs);
    return ok;
}

bool readWholeBinaryOutput(const std::string& path, int versionIndex, const binary_layout_catalogue& layouts,
                           bool monthly, tellura_outputs& outputs, message_sink& errors) {
    std::vector<tellura_event_block> blocks(1);
    blocks[0].lastYear = 32767;
    blocks[0].outputInterval = monthly ? 1.0f : 12.0f;
    message_sink messages;
    bool ok = readBinaryOutput(path, versionIndex, layouts, blocks, outputs, messages);
    // Reading stops at the end of the data without an error: what was read is the file.
    const bool anyRead = !outputs.annual.empty() || outputs.monthlyCount() > 0;
    if (!ok && anyRead && !messages.hasErrors()) ok = true;
    errors.add(messages);
    return ok;
}

}  // namespace sb
