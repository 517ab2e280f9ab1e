#include "app/message_sink.h"

#include <cstdarg>
#include <ostream>

#include "app/text_format.h"

namespace sb {

#define SB_SINK_FORMATTED(severity)              \
    va_list args;                                \
    va_start(args, format);                      \
    std::string text = vstrprintf(format, args); \
    va_end(args);                                \
    add(severity, std::move(text))

void message_sink::errorf(const char* format, ...) { SB_SINK_FORMATTED(message_severity::error); }
void message_sink::warningf(const char* format, ...) { SB_SINK_FORMATTED(message_severity::warning); }
void message_sink::notef(const char* format, ...) { SB_SINK_FORMATTED(message_severity::note); }

#undef SB_SINK_FORMATTED

void message_sink::add(message_severity severity, std::string text) {
    // An empty text says nothing; keeping it would only make an empty message.
    if (text.empty()) return;
    if (severity == message_severity::error) ++errors_;
    messages_.push_back(message{severity, std::move(text)});
    received(messages_.back());
}

void message_sink::add(const message_sink& other) {
    if (&other == this) return;
    for (const message& m : other.messages_) add(m.severity, m.text);
}

bool message_sink::addOutcome(bool succeeded, std::string text) {
    add(succeeded ? message_severity::warning : message_severity::error, std::move(text));
    return succeeded;
}

const message* message_sink::firstError() const {
    for (const message& m : messages_)
        if (m.severity == message_severity::error) return &m;
    return nullptr;
}

std::string message_sink::text() const {
    std::string all;
    for (const message& m : messages_) all += m.text;
    return all;
}

void message_sink::clear() {
    messages_.clear();
    errors_ = 0;
}

std::ostream& operator<<(std::ostream& out, const message_sink& sink) { return out << sink.text(); }

}  // namespace sb
