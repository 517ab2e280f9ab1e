#pragma once
// Free IDs for new control records, soils and weather stations: one past the
// highest one stored or named. An ID that a record names counts as taken even
// when nothing is stored under it (a new project's default record names soil 1
// and station 1 before they exist): a new soil or station given that ID would
// silently become that record's.
#include <cstdint>
#include <optional>

namespace sb {

class database;

// One past the highest control record ID; 1 for a project without records.
int32_t nextFreeRecordId(database& db);
// One past the highest of the stored soils and every record's Soil ID. The
// IDs named by `replaced` (a record about to be replaced) do not count.
int32_t nextFreeSoilId(database& db, std::optional<int32_t> replaced = {});
// One past the highest of the stored stations, every record's Weather ID and
// every event block's Weather ID, but those of `replaced`.
int32_t nextFreeStationId(database& db, std::optional<int32_t> replaced = {});

bool controlRecordExists(database& db, int32_t id);

}  // namespace sb
