#pragma once
// A named parameter record of a ".100" file: a header line (name and
// description) followed by the record's value lines. Each record kind (a
// crop, a cultivation, the site, the fixed parameters, ...) derives from it,
// says how a value line sets its fields and writes its value lines in the
// order the model reads them.
#include <cstddef>
#include <string>
#include <string_view>

#include "app/message_sink.h"

namespace sb {

class tellura_input {
public:
    static constexpr size_t kMaxNameLength = 20;
    static constexpr size_t kMaxDescriptionLength = 80;

    virtual ~tellura_input() = default;

    // The record's key within its list, compared without regard to case.
    std::string name;
    std::string description;

    // Sets the field named by one value line. Returns false when no field of
    // this kind has that name (the importer ignores such lines).
    virtual bool setField(std::string_view fieldName, double value, message_sink& errors) = 0;

    // A value line setField() did not take: a kind that keeps such values
    // (so that nothing read is lost) keeps it and returns true.
    virtual bool keepValue(std::string_view /*fieldName*/, double /*value*/) { return false; }

    // "NAME " padded to 5 characters, then " description" when there is one.
    virtual void writeHeader(std::string& out) const;

    // The record's value lines, in the model's order for that version.
    virtual void writeValues(std::string& out, int version) const = 0;

    // Header followed by the value lines.
    void write(std::string& out, int version) const;
};

}  // namespace sb
