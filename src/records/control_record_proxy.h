#pragma once
// Light handles on records: a position in the navigation order, the record's ID
// and the label the record list shows, without the record's data.
#include <cstdint>
#include <string>

namespace sb {

class table_record;

class record_proxy {
public:
    virtual ~record_proxy() = default;
    // Takes the number and the record's ID from a `Control Records` row and formats the label.
    virtual void setFromRow(int32_t number, const table_record& row);

    int32_t recordNumber = 0;  // 1-based position in the navigation order
    int32_t id = 0;
    std::string label;
};

class control_record_proxy : public record_proxy {
public:
    // "%5ld %5ld %s": record number, ID, description.
    void setFromRow(int32_t number, const table_record& row) override;
};

}  // namespace sb
