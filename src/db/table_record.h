#pragma once
// One row of a catalogue table held in memory: the accessor record that a row
// set fills when it moves and writes when it inserts. Every table-bound record
// (crop_option, tellura_soil, ...) is one of these with typed helpers on top.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "db/table_catalogue.h"

namespace sb {

constexpr double kBitTrue = 65535.0;  // yes/no columns hold all bits set for true

class table_record {
public:
    explicit table_record(table_id table);
    virtual ~table_record() = default;
    table_record(const table_record&) = default;
    table_record& operator=(const table_record&) = default;
    table_record(table_record&&) = default;
    table_record& operator=(table_record&&) = default;

    table_id table() const { return table_; }
    const database_maker_table& def() const { return *def_; }
    int columnCount() const { return static_cast<int>(numbers_.size()); }
    // -1 when the table has no such column (case ignored).
    int column(std::string_view name) const { return def_->fieldIndex(name); }
    bool isText(int col) const;

    // Numeric columns. SINGLE values are kept at float precision, BIT as 65535/0,
    // integers as whole numbers. Range checks against the column type happen on
    // insert, so a bad value is refused with a message instead of stored silently.
    double number(int col) const { return numbers_[static_cast<size_t>(col)]; }
    void setNumber(int col, double value);
    float single(int col) const { return static_cast<float>(number(col)); }
    int32_t integer(int col) const { return static_cast<int32_t>(number(col)); }
    bool flag(int col) const { return number(col) == kBitTrue; }
    // A value a model output did not give (a name its list utility did not know):
    // stored as NULL in the tables that keep missing values (keepsMissingValues),
    // shown and exported as empty, never as 0.
    bool isMissing(int col) const;
    void setMissing(int col);
    // Every SINGLE column missing (the keys and other columns stay as they are).
    void setValuesMissing();
    void setFlag(int col, bool on) { setNumber(col, on ? kBitTrue : 0.0); }

    // Text columns only (isText(col)); kept compact because output rows have none.
    const std::string& text(int col) const;
    void setText(int col, std::string value);

    // By column name; reading an unknown name gives 0 / "", setting one returns false.
    double number(std::string_view name) const;
    bool setNumber(std::string_view name, double value);
    const std::string& text(std::string_view name) const;
    bool setText(std::string_view name, std::string value);

    // Every value back to 0 / "".
    void clear();

    bool operator==(const table_record& other) const;

private:
    table_id table_;
    const database_maker_table* def_;
    std::vector<double> numbers_;
    std::vector<std::string> texts_;  // one per text column, by textSlot()
};

}  // namespace sb
