#include "db/project_location.h"

#include <cctype>
#include <cstdlib>

#include "app/text_format.h"

namespace sb {

namespace {

constexpr const char* kMask = "****";

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// "%2F" -> "/"; false for a broken escape.
bool percentDecode(std::string_view text, std::string& out) {
    out.clear();
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        int high = i + 1 < text.size() ? hexValue(text[i + 1]) : -1;
        int low = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) return false;
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return true;
}

bool isOptionKey(std::string_view key) {
    if (key.empty()) return false;
    for (char c : key)
        if (!std::islower(static_cast<unsigned char>(c)) && c != '_') return false;
    return true;
}

// The driver takes further settings as "key=value" joined by ';' and blanks.
bool isPlainOptionValue(std::string_view value) {
    for (char c : value)
        if (c == ';' || c == ' ' || c == '\'' || c == '\\') return false;
    return !value.empty();
}

}  // namespace

bool looksLikeUrl(const std::string& text) {
    size_t colon = text.find("://");
    if (colon == std::string::npos || colon == 0 || !std::isalpha(static_cast<unsigned char>(text[0]))) return false;
    for (size_t i = 1; i < colon; ++i) {
        char c = text[i];
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '+' && c != '-' && c != '.') return false;
    }
    return true;
}

bool project_location::parse(const std::string& text, project_location& location, std::string& problem) {
    project_location l;
    l.text_ = text;
    if (!looksLikeUrl(text)) {
        l.path_ = text;
        location = std::move(l);
        return true;
    }
    const size_t schemeEnd = text.find("://");
    l.scheme_ = toLower(std::string_view(text).substr(0, schemeEnd));
    if (l.scheme_ != "postgresql" && l.scheme_ != "postgres") {
        problem = strprintf("The scheme \"%s\" is not known: a project is a file path or a postgresql:// URL.",
                            l.scheme_.c_str());
        return false;
    }
    l.kind_ = kind::postgresql;
    const size_t rest = schemeEnd + 3;
    const size_t queryAt = text.find('?', rest);
    const std::string_view beforeQuery =
        std::string_view(text).substr(rest, (queryAt == std::string::npos ? text.size() : queryAt) - rest);
    const size_t slash = beforeQuery.find('/');
    std::string_view authority = beforeQuery.substr(0, slash);
    const std::string_view dbPart =
        slash == std::string_view::npos ? std::string_view() : beforeQuery.substr(slash + 1);

    // user[:password]@
    const size_t at = authority.rfind('@');
    if (at != std::string_view::npos) {
        std::string_view userInfo = authority.substr(0, at);
        const size_t colon = userInfo.find(':');
        if (!percentDecode(userInfo.substr(0, colon), l.user_)) {
            problem = "The user name in the URL has a broken %-escape.";
            return false;
        }
        if (colon != std::string_view::npos) {
            if (!percentDecode(userInfo.substr(colon + 1), l.password_)) {
                problem = "The password in the URL has a broken %-escape.";
                return false;
            }
        }
        authority = authority.substr(at + 1);
    }
    // host[:port], the host possibly a bracketed IPv6 address
    std::string_view hostPart = authority, portPart;
    if (!authority.empty() && authority.front() == '[') {
        const size_t close = authority.find(']');
        if (close == std::string_view::npos) {
            problem = "The URL's host address has no closing \"]\".";
            return false;
        }
        hostPart = authority.substr(1, close - 1);
        std::string_view after = authority.substr(close + 1);
        if (!after.empty() && after.front() != ':') {
            problem = "The URL has text after its host address.";
            return false;
        }
        if (!after.empty()) portPart = after.substr(1);
    } else if (const size_t colon = authority.rfind(':'); colon != std::string_view::npos) {
        hostPart = authority.substr(0, colon);
        portPart = authority.substr(colon + 1);
    }
    if (!percentDecode(hostPart, l.host_)) {
        problem = "The host in the URL has a broken %-escape.";
        return false;
    }
    auto setPort = [&](std::string_view digits) {
        std::string port(digits);
        char* end = nullptr;
        long value = std::strtol(port.c_str(), &end, 10);
        if (port.empty() || *end != '\0' || value < 1 || value > 65535) {
            problem = strprintf("The port \"%s\" in the URL is not a number from 1 to 65535.", port.c_str());
            return false;
        }
        l.port_ = static_cast<int>(value);
        return true;
    };
    if (!portPart.empty() && !setPort(portPart)) return false;
    if (!percentDecode(dbPart, l.database_)) {
        problem = "The database name in the URL has a broken %-escape.";
        return false;
    }

    if (queryAt != std::string::npos) {
        std::string_view query = std::string_view(text).substr(queryAt + 1);
        while (!query.empty()) {
            const size_t amp = query.find('&');
            std::string_view pair = query.substr(0, amp);
            query = amp == std::string_view::npos ? std::string_view() : query.substr(amp + 1);
            if (pair.empty()) continue;
            const size_t eq = pair.find('=');
            std::string key(pair.substr(0, eq)), value;
            if (eq == std::string_view::npos || !percentDecode(pair.substr(eq + 1), value)) {
                problem = strprintf("The URL setting \"%s\" is not of the form name=value.", std::string(pair).c_str());
                return false;
            }
            if (key == "host") l.host_ = value;
            else if (key == "port") {
                if (!setPort(value)) return false;
            } else if (key == "user") l.user_ = value;
            else if (key == "password") {
                l.password_ = value;
            } else if (key == "dbname") l.database_ = value;
            else if (isOptionKey(key) && isPlainOptionValue(value)) l.options_.emplace_back(key, value);
            else {
                problem = strprintf("The URL setting \"%s\" cannot be passed to the server.", key.c_str());
                return false;
            }
        }
    }
    if (l.database_.empty()) {
        problem = "The URL names no database: postgresql://[user@]host[:port]/DATABASE.";
        return false;
    }
    location = std::move(l);
    return true;
}

std::string project_location::rebuild(const std::string& text, const char* passwordText) {
    if (!looksLikeUrl(text)) return text;
    // The text as given, with the password's places filled by `passwordText`
    // (or left out when it is null), so users recognise what they typed.
    const size_t schemeEnd = text.find("://") + 3;
    const size_t queryAt = text.find('?', schemeEnd);
    std::string head = text.substr(0, queryAt);
    // The last '@' ends the login even when a password holds an unescaped '/' or
    // '@': a password is never shown, so this errs on the side of masking more.
    const size_t at = head.rfind('@');
    if (at != std::string::npos && at >= schemeEnd) {
        const size_t colon = head.find(':', schemeEnd);
        if (colon != std::string::npos && colon < at)
            head = head.substr(0, colon) + (passwordText ? std::string(":") + passwordText : "") + head.substr(at);
    }
    if (queryAt == std::string::npos) return head;
    std::string query;
    std::string_view rest = std::string_view(text).substr(queryAt + 1);
    while (!rest.empty()) {
        const size_t amp = rest.find('&');
        std::string_view pair = rest.substr(0, amp);
        rest = amp == std::string_view::npos ? std::string_view() : rest.substr(amp + 1);
        if (istartsWith(pair, "password=")) {
            if (!passwordText) continue;
            query += (query.empty() ? "" : "&") + std::string("password=") + passwordText;
            continue;
        }
        if (!pair.empty()) query += (query.empty() ? "" : "&") + std::string(pair);
    }
    return query.empty() ? head : head + "?" + query;
}

std::string project_location::shown() const { return rebuild(text_, kMask); }

std::string project_location::withoutPassword() const { return rebuild(text_, nullptr); }

std::string project_location::shown(const std::string& text) { return rebuild(text, kMask); }

project_location project_location::onDatabase(const std::string& name) const {
    project_location other = *this;
    other.database_ = name;
    return other;
}

}  // namespace sb
