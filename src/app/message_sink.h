#pragma once
// Where an operation's messages go, and how far it has got and whether the
// user wants it to stop: one object handed down a long operation.
//
// Each message is a severity and the text users see, word for word ("ERROR,
// ..." keeps its "ERROR"): code asks the severity, never the text. The plain
// sink collects the messages in their order (text() is what the user is
// shown); the command line's and the desktop's sinks derive from it to show
// progress and take a cancel.
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace sb {

enum class message_severity { note, warning, error };

struct message {
    message_severity severity = message_severity::note;
    std::string text;  // as shown, its line end included

    bool operator==(const message&) const = default;
};

enum class cancel_request {
    none,
    finish_running,  // start no further piece of work; let the running ones end and be kept
    end_running,     // also end the running ones now
};

class message_sink {
public:
    message_sink() = default;
    message_sink(const message_sink&) = default;
    message_sink& operator=(const message_sink&) = default;
    virtual ~message_sink() = default;

    void error(std::string text) { add(message_severity::error, std::move(text)); }
    void warning(std::string text) { add(message_severity::warning, std::move(text)); }
    void note(std::string text) { add(message_severity::note, std::move(text)); }
    void errorf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void warningf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void notef(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void add(message_severity severity, std::string text);
    // Another sink's messages, in their order and with their severities.
    void add(const message_sink& other);
    // The text of a step that reports in plain text and says by its result
    // whether it failed: an error when it did, otherwise a warning.
    bool addOutcome(bool succeeded, std::string text);

    const std::vector<message>& messages() const { return messages_; }
    // Every message's text in order: what the user is shown.
    std::string text() const;
    bool hasErrors() const { return errors_ > 0; }
    // The first message that is an error; null when none is.
    const message* firstError() const;
    bool empty() const { return messages_.empty(); }
    // How many messages came so far: what a caller marks to see what one step added.
    size_t count() const { return messages_.size(); }
    void clear();

    // What is being done now ("Running TELLURA #3 Record=1 ID=7"), and how far.
    virtual void progressText(const std::string& /*doing*/) {}
    virtual void progressCount(long /*done*/, long /*total*/) {}
    // Asked by long work between its pieces.
    virtual cancel_request cancelRequested() { return cancel_request::none; }

protected:
    // Each message as it comes, once kept: a sink that shows messages at once
    // hooks in here.
    virtual void received(const message& /*m*/) {}

private:
    std::vector<message> messages_;
    size_t errors_ = 0;
};

// The sink's text, as the user is shown it (test failures print sinks so).
std::ostream& operator<<(std::ostream& out, const message_sink& sink);
// A sink reads as its text; two sinks are alike when their messages, severities
// included, are.
inline bool operator==(const message_sink& sink, std::string_view text) { return sink.text() == text; }
inline bool operator==(const message_sink& a, const message_sink& b) { return a.messages() == b.messages(); }

}  // namespace sb
