#include "records/option_record.h"

#include <cmath>

#include "app/release_profile_catalogue.h"
#include "app/text_format.h"
#include "db/database_maker.h"
#include "paramfile/field_setter.h"
#include "paramfile/value_line_writer.h"
#include "records/option_layout.h"

namespace sb {

namespace {

bool isByte(int type) { return type == kTypeByte || type == kTypeByteSigned; }

// Where the array element named by the line lives: nullptr when the line names
// no element of ours (unknown name, or a subscript out of range, which the
// setter has already reported).
const std::vector<int>* locateElement(const option_array_field& field, field_setter& setter) {
    int index = field_setter::kNoMatch;
    switch (field.subscripts) {
        case 1:
            index = setter.locate1(field.name, field.dims[0]);
            break;
        case 2:
            index = setter.locate2(field.name, field.dims[0], field.dims[1]);
            break;
        case 3:
            index = setter.locate3(field.name, field.dims[0], field.dims[1], field.dims[2], false, 0);
            break;
        default:
            break;
    }
    if (index < 0) return nullptr;
    return &field.elements[static_cast<size_t>(index)];
}

// A value no column holds: as a whole number on "int" lines, else as a real.
void writeFileValue(std::string& out, const profile_line& line, double value) {
    if (line.integer) writeSmallInt(out, static_cast<int>(value), line.name);
    else writeReal(out, value, line.name);
}

}  // namespace

option_record::option_record(option_kind kind) : table_record(optionMember(kind).table), kind_(kind) {}

bool option_record::setField(std::string_view fieldName, double value, message_sink& errors) {
    const option_layout& layout = option_layout::of(kind_);
    const std::vector<int>* columns = nullptr;
    size_t open = fieldName.find('(');
    if (open == std::string_view::npos) {
        columns = layout.scalarColumns(fieldName);
    } else if (const option_array_field* field = layout.arrayField(fieldName.substr(0, open))) {
        field_setter setter(fieldName, value, errors);
        columns = locateElement(*field, setter);
        if (!columns && setter.found()) return true;  // ours, but out of range: reported
    }
    if (!columns || columns->empty()) return false;
    for (int column : *columns) store(column, value);
    return true;
}

// Values are kept as their columns hold them: bytes truncated toward zero
// (and kept within 0..255 so that saving cannot fail on them), yes/no as all
// bits set for any value but 0.
void option_record::store(int column, double value) {
    int type = def().fields()[static_cast<size_t>(column)].type;
    if (type == kTypeBit) {
        setFlag(column, value != 0.0);
    } else if (isByte(type)) {
        double whole = std::isnan(value) ? 0.0 : std::trunc(value);
        setNumber(column, std::fmin(255.0, std::fmax(0.0, whole)));
    } else {
        setNumber(column, value);
    }
}

bool option_record::keepValue(std::string_view fieldName, double value) {
    kept.set(member().runFile, fieldName, value);
    return true;
}

void option_record::writeValues(std::string& out, int version) const {
    const release_profile* profile = release_profile_catalogue::shipped().find(defaultReleaseProfileName(version));
    message_sink ignored;
    if (profile) writeProfileValues(out, *profile, ignored);
}

bool option_record::writeProfileValues(std::string& out, const release_profile& profile, message_sink& errors) const {
    const std::vector<profile_line>* lines = profile.lines(member().runFile);
    if (!lines) return true;
    const option_layout& layout = option_layout::of(kind_);
    bool ok = true;
    for (const profile_line& line : *lines) {
        if (line.isText()) {
            out += line.text + "\n";
            continue;
        }
        int column =
            line.column.empty() ? layout.writtenColumn(line.name, profile.version) : def().fieldIndex(line.column);
        const double* keptValue = kept.find(member().runFile, line.name);
        switch (chooseValueSource(line, column >= 0, keptValue != nullptr)) {
            case value_source::place: {
                int type = def().fields()[static_cast<size_t>(column)].type;
                if (type == kTypeBit) writeBoolean(out, flag(column) ? kTrue16 : kFalse16, line.name);
                else if (isByte(type) || line.integer) writeSmallInt(out, integer(column), line.name);
                else writeReal(out, static_cast<double>(single(column)), line.name);
                break;
            }
            case value_source::kept:
                writeFileValue(out, line, *keptValue);
                break;
            case value_source::fallback:
                writeFileValue(out, line, *line.fallback);
                break;
            case value_source::none:
                errors.errorf("ERROR, %s \"%s\" has no value for \"%s\", which %s writes into %s.\n", member().cliName,
                              name.c_str(), line.name.c_str(), profile.where(line.line).c_str(), member().runFile);
                ok = false;
                break;
        }
    }
    return ok;
}

void option_record::fromRow(const table_record& row) {
    if (row.table() != table()) return;  // a row of another table would change the record's kind
    static_cast<table_record&>(*this) = row;
    name = text(std::string_view("Name"));
    description = text(std::string_view("Description"));
}

table_record option_record::toRow() const {
    table_record row = *this;
    row.setText(std::string_view("Name"), name);
    row.setText(std::string_view("Description"), description);
    return row;
}

}  // namespace sb
