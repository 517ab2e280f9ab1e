#include "modeloutput/output_value_parse.h"

#include <charconv>
#include <cmath>

#include "app/text_format.h"

namespace sb {

namespace {
std::string_view numberText(std::string_view field) {
    field = trim(field);
    if (!field.empty() && field.front() == '+') field.remove_prefix(1);
    return field;
}

template <class T>
parse_result parseReal(std::string_view field, T& value) {
    std::string_view text = numberText(field);
    if (text.empty()) return parse_result::empty;
    T parsed{};
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (ec == std::errc::result_out_of_range) return parse_result::not_finite;
    if (ec != std::errc() || end != text.data() + text.size()) return parse_result::not_a_number;
    if (!std::isfinite(parsed)) return parse_result::not_finite;
    value = parsed;
    return parse_result::ok;
}
}  // namespace

parse_result parseOutputFloat(std::string_view field, float& value) {
    // Parsed as double first so that a value just beyond float range is
    // recognised as an overflow instead of silently becoming infinity.
    double wide = 0;
    parse_result r = parseReal(field, wide);
    if (r != parse_result::ok) return r;
    if (std::fabs(wide) > 3.4028234663852886e38) return parse_result::not_finite;
    value = static_cast<float>(wide);
    return parse_result::ok;
}

parse_result parseOutputDouble(std::string_view field, double& value) { return parseReal(field, value); }

parse_result parseOutputUnsigned(std::string_view field, unsigned& value) {
    std::string_view text = numberText(field);
    if (text.empty()) return parse_result::empty;
    unsigned parsed = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (ec == std::errc::result_out_of_range) return parse_result::not_finite;
    if (ec != std::errc() || end != text.data() + text.size()) return parse_result::not_a_number;
    value = parsed;
    return parse_result::ok;
}

void bad_value_log::note(long where, std::string_view text, std::string_view name, message_sink& errors) {
    if (count_++ >= kShown) return;
    std::string shown(trim(text).substr(0, 40));
    errors.warningf("WARNING, %s %s %ld: value \"%s\" of \"%s\" is not a finite number; left unset.\n", fileKind_,
                    unit_, where, shown.c_str(), std::string(name).c_str());
}

void bad_value_log::finish(message_sink& errors) const {
    if (count_ > kShown)
        errors.warningf("WARNING, %s: %ld further values were not finite numbers and were left unset.\n", fileKind_,
                        count_ - kShown);
}

std::string_view fieldRange(std::string_view line, size_t first, size_t last) {
    if (first < 1 || first > line.size() || last < first) return {};
    size_t end = last < line.size() ? last : line.size();
    return line.substr(first - 1, end - first + 1);
}

}  // namespace sb
