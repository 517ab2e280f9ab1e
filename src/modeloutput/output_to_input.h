#pragma once
// Taking a run's results back as the starting state of the next run: the last
// year's (or month's) live carbon, live elements and mineral elements become the
// record's initial site values, and the soil layers' mineral contents come from
// the stored soil-layer output.
#include <cstdint>
#include <string>

#include "app/message_sink.h"

namespace sb {

class database;
class tellura_control_record;
class tellura_soil;
struct tellura_outputs;

// The eight values aglcis(1), aglcis(2), aglive(1..3), aminrl(1..3) of the last
// annual record into the site's AGLCIS(1), AGLCIS(2), AGLIVE(1..3), AMINRL(1..3).
// No annual record: "No annual output exists for record.\n". All eight zero:
// nothing changes and nothing is reported. Returns true when values were copied.
bool copyAnnualOutputToInput(const tellura_outputs& outputs, tellura_control_record& record, message_sink& errors);

// The same from the last monthly record (no all-zero test); reports
// "Monthly copied for record.\n" or "No monthly output exists for record.\n".
bool copyMonthlyOutputToInput(const tellura_outputs& outputs, tellura_control_record& record, message_sink& errors);

// Each soil layer of the record's soil (`soil`) takes Mineral N, Mineral P, Mineral S and
// Initial Relative Water Content from the output soil-layer row of the same
// layer number. soil is null when the record has no soil:
// "ERROR, No soil record to fill.\n".
bool fillSoilFromOutput(const tellura_outputs& outputs, tellura_soil* soil, message_sink& errors);

// All of the above for stored record `id`, saved in one session: the site's
// values (annual, else monthly) and the soil's layers are kept together or not
// at all. A soil that other records use too is left as it is, so that their
// inputs do not change: the layers go into a new soil (the next free soil ID,
// named "<name> (from outputs of record <id>)") that this record then uses,
// and a note says so. False, with nothing changed, when nothing could be copied
// or anything failed.
bool copyOutputToInput(database& db, int32_t id, message_sink& errors);

}  // namespace sb
