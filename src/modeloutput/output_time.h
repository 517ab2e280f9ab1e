#pragma once
// The model writes its output times as fractional years. These rules turn a
// time into the year (and month) whose output record receives the row, and
// count the rows and years a reader has seen for its closing message.
#include <string>

#include "app/message_sink.h"

namespace sb {

struct output_year_month {
    int year = 0;
    int month = 0;  // 1..12
};

// year = floor(t); month from the fraction in 32-bit float arithmetic, the way
// the model computed its own output times, so 2000.00 is December 1999,
// 2000.08 January 2000 and 2000.50 June 2000.
output_year_month monthlyTime(float time);
int annualYear(double time);

// Whether an output time is the last of a block running to `lastYear`: the
// model writes a block's output up to the end of its last year, whose time
// is lastYear + 1.00 (December of the last year in monthly output).
bool closesBlock(double time, int lastYear);

// Row count and lowest / highest year of one read (bounds start at 999999 and -999999).
struct output_year_span {
    long count = 0;
    long low = 999999;
    long high = -999999;
    void see(long year);
    // "%ld records read, from years %ld to %ld.\n"
    void appendRecordsMessage(message_sink& errors) const;
};

}  // namespace sb
