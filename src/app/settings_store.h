#pragma once
// Where the user's settings live: integers and strings by section and key.
// The application reads and writes them through this interface so that the
// order and the exact keys can be checked without a real profile.
#include <string>
#include <string_view>

#include "app/message_sink.h"

namespace sb {

class settings_store {
public:
    virtual ~settings_store() = default;

    // False when the key is missing or does not hold a value of that type;
    // `value` is then left as it is.
    virtual bool readInt(std::string_view section, std::string_view key, long long& value) = 0;
    virtual bool readString(std::string_view section, std::string_view key, std::string& value) = 0;

    virtual void writeInt(std::string_view section, std::string_view key, long long value) = 0;
    virtual void writeString(std::string_view section, std::string_view key, std::string_view value) = 0;
    virtual void remove(std::string_view section, std::string_view key) = 0;

    // Makes the writes durable; false with a message when they could not be.
    virtual bool flush(message_sink& errors) = 0;
};

}  // namespace sb
