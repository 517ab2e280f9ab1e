#include "records/control_record_proxy.h"

#include "app/text_format.h"
#include "db/table_record.h"

namespace sb {

void record_proxy::setFromRow(int32_t number, const table_record& row) {
    recordNumber = number;
    id = row.integer(0);
}

void control_record_proxy::setFromRow(int32_t number, const table_record& row) {
    record_proxy::setFromRow(number, row);
    // `Control Records` keeps the description right after the ID.
    label = strprintf("%5ld %5ld %s", static_cast<long>(recordNumber), static_cast<long>(id), row.text(1).c_str());
}

}  // namespace sb
