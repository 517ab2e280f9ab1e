#pragma once
// Name-to-field setters: how a record kind's setField() maps one value line
// of a ".100" file ("0.40000   PRDX(1)") onto its fields.
//
//   bool crop::setField(std::string_view name, double value, message_sink& errors) {
//       field_setter set(name, value, errors);
//       set.real("FULCAN", fulcan) || set.array1("PRDX", prdx, 3) || set.array2("X", x, 2, 3);
//       return set.found();
//   }
//
// Each call compares the line's name with one field's name without regard to
// case and returns whether it matched; on a match it stores the value (when
// the subscripts are in bounds) and marks the setter as found.
//
// Subscripts are 1-based. A subscript beyond the array's size gives
//   "ERROR, exceeds array size: NAME\n"                         (1 subscript)
//   "ERROR, exceeds array size: \"NAME\" i x j (rows x cols)\n"   (2 subscripts)
//   "ERROR, exceeds array size: NAME i x j x k (d1 x d2 x d3)\n"  (3 subscripts)
// with NAME the field's own spelling. A subscript below 1 (also a missing or
// non-numeric one) gives "ERROR, array subscript below 1: LINE-NAME\n".
// Either way nothing is stored: the setter never writes outside the array.
// Subscripts too large for an int are read as 2147483647.
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "app/message_sink.h"

namespace sb {

class field_setter {
public:
    field_setter(std::string_view lineName, double value, message_sink& errors)
        : lineName_(lineName), value_(value), errors_(errors) {}

    bool found() const { return found_; }
    std::string_view lineName() const { return lineName_; }
    double value() const { return value_; }

    bool real(std::string_view field, double& target);
    bool real(std::string_view field, float& target);
    // Truncated toward zero; values outside the type's range are clamped.
    bool int8(std::string_view field, int8_t& target);
    bool int16(std::string_view field, int16_t& target);
    bool int32(std::string_view field, int32_t& target);
    // 0 when the value is 0.0, otherwise 65535.
    bool boolean(std::string_view field, uint16_t& target);

    // name(i); `size` elements.
    template <class T>
    bool array1(std::string_view field, T* target, int size) {
        return array1Index(field, target, size) != kNoMatch;
    }
    // As array1, but returns the zero-based index that was set, -1 when the
    // name matched but nothing was stored, kNoMatch (-2) when it did not match.
    template <class T>
    int array1Index(std::string_view field, T* target, int size) {
        int index = locate1(field, size);
        if (index >= 0) store(target[index]);
        return index;
    }

    // name(i,j) into a rows x cols row-major array.
    template <class T>
    bool array2(std::string_view field, T* target, int rows, int cols) {
        int index = locate2(field, rows, cols);
        if (index >= 0) store(target[index]);
        return index != kNoMatch;
    }

    // name(i,j,k) into a d1 x d2 x d3 row-major array.
    template <class T>
    bool array3(std::string_view field, T* target, int d1, int d2, int d3) {
        int index = locate3(field, d1, d2, d3, false, 0);
        if (index >= 0) store(target[index]);
        return index != kNoMatch;
    }
    // The file spells the subscripts in the opposite order: name(k,j,i) with
    // k <= d3, j <= d2, i <= d1 sets target[planeOffset + ((i-1)*d2 + j-1)*d3 + k-1].
    // `target` must hold planeOffset + d1*d2*d3 elements.
    template <class T>
    bool array3Reversed(std::string_view field, T* target, int d1, int d2, int d3, int planeOffset) {
        int index = locate3(field, d1, d2, d3, true, planeOffset);
        if (index >= 0) store(target[index]);
        return index != kNoMatch;
    }

    static constexpr int kNoMatch = -2;

    // Index finders shared by the templates: kNoMatch, -1 (matched, message
    // appended) or the zero-based element index. A match marks found().
    int locate1(std::string_view field, int size);
    int locate2(std::string_view field, int rows, int cols);
    int locate3(std::string_view field, int d1, int d2, int d3, bool reversed, int planeOffset);

private:
    bool matchScalar(std::string_view field);
    template <class T>
    void store(T& target) {
        if constexpr (std::is_floating_point_v<T>) {
            target = static_cast<T>(value_);
        } else {
            target = static_cast<T>(clampTo(std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
        }
    }
    // Truncates toward zero and clamps into [low, high]; NaN gives 0.
    long long clampTo(long long low, long long high) const;

    std::string_view lineName_;
    double value_;
    message_sink& errors_;
    bool found_ = false;
};

}  // namespace sb
