#include "db/table_record.h"

#include <cmath>

namespace sb {

namespace {
const std::string kNoText;
}

table_record::table_record(table_id table)
    : table_(table),
      def_(&tableDef(table)),
      numbers_(def_->fields().size(), 0.0),
      texts_(static_cast<size_t>(def_->textCount())) {}

bool table_record::isText(int col) const { return def_->isText(col); }

void table_record::setNumber(int col, double value) {
    switch (def_->fields()[static_cast<size_t>(col)].type) {
        case kTypeSingle:
            // The column holds a 32-bit float: keep exactly what a read-back will give.
            value = static_cast<double>(static_cast<float>(value));
            break;
        case kTypeBit:
            value = value != 0.0 ? kBitTrue : 0.0;
            break;
        case kTypeByte:
        case kTypeByteSigned:
        case kTypeSmallint:
        case kTypeInteger:
            // Whole-number columns round like the store would; the range is checked on insert.
            if (std::isfinite(value)) value = std::nearbyint(value);
            break;
        default:
            break;
    }
    numbers_[static_cast<size_t>(col)] = value;
}

const std::string& table_record::text(int col) const {
    int slot = def_->textSlot(col);
    return slot < 0 ? kNoText : texts_[static_cast<size_t>(slot)];
}

void table_record::setText(int col, std::string value) {
    int slot = def_->textSlot(col);
    if (slot >= 0) texts_[static_cast<size_t>(slot)] = std::move(value);
}

double table_record::number(std::string_view name) const {
    int col = column(name);
    return col < 0 ? 0.0 : number(col);
}

bool table_record::setNumber(std::string_view name, double value) {
    int col = column(name);
    if (col < 0 || isText(col)) return false;
    setNumber(col, value);
    return true;
}

const std::string& table_record::text(std::string_view name) const {
    int col = column(name);
    return col < 0 ? kNoText : text(col);
}

bool table_record::setText(std::string_view name, std::string value) {
    int col = column(name);
    if (col < 0 || !isText(col)) return false;
    setText(col, std::move(value));
    return true;
}

void table_record::clear() {
    std::fill(numbers_.begin(), numbers_.end(), 0.0);
    for (auto& text : texts_) text.clear();
}

bool table_record::isMissing(int col) const { return std::isnan(numbers_[static_cast<size_t>(col)]); }

void table_record::setMissing(int col) {
    numbers_[static_cast<size_t>(col)] = std::numeric_limits<double>::quiet_NaN();
}

void table_record::setValuesMissing() {
    for (int col = 0; col < columnCount(); ++col)
        if (def_->fields()[static_cast<size_t>(col)].type == kTypeSingle) setMissing(col);
}

bool table_record::operator==(const table_record& other) const {
    if (table_ != other.table_ || texts_ != other.texts_ || numbers_.size() != other.numbers_.size()) return false;
    // Two missing values are the same (NaN never equals itself).
    for (size_t i = 0; i < numbers_.size(); ++i)
        if (numbers_[i] != other.numbers_[i] && !(std::isnan(numbers_[i]) && std::isnan(other.numbers_[i])))
            return false;
    return true;
}

}  // namespace sb
