#include "records/control_record_proxy.h"

#include "app/text_format.h"
#include "db/table_columns.h"

namespace sb {

namespace {
const table_columns& proxyColumns() {
    static const table_columns c(table_id::control_records, {"ID", "Description"});
    return c;
}
}  // namespace

void record_proxy::setFromRow(int32_t number, const table_record& row) {
    recordNumber = number;
    id = row.integer(proxyColumns()["ID"]);
}

void control_record_proxy::setFromRow(int32_t number, const table_record& row) {
    record_proxy::setFromRow(number, row);
    label = strprintf("%5ld %5ld %s", static_cast<long>(recordNumber), static_cast<long>(id),
                      row.text(proxyColumns()["Description"]).c_str());
}

}  // namespace sb
