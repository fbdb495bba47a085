#include "Tessel/icalendar/CGICalendarValue.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>

namespace Tessel {

// The text from its leading number on, without blanks and without a plus sign.
static std::string_view leadingNumber(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool signedTwice = text.starts_with("+-");
    if (text.starts_with('+') && !signedTwice) text.remove_prefix(1);
    return text;
}

// Whether a decimal number that no float is near lies above them all, not between the least and 0.
static bool isHuge(std::string_view number)
{
    const auto mark = std::min(number.find_first_of("eE"), number.size());
    const auto digits = number.substr(0, mark);
    const auto point = std::min(digits.find('.'), digits.size());
    const auto first = std::min(digits.find_first_of("123456789"), digits.size());
    // The number is 0.1 or more, less than 1, times ten to the power of this.
    const auto place = std::int64_t(point) - std::int64_t(first) + (first > point);

    if (mark == number.size()) return place > 0;

    auto exponent = number.substr(mark + 1);
    if (exponent.starts_with('+')) exponent.remove_prefix(1);
    std::int64_t power = 0;
    const auto error
        = std::from_chars(exponent.data(), exponent.data() + exponent.size(), power).ec;
    if (error == std::errc::result_out_of_range) return !exponent.starts_with('-');
    return power > -place;
}

void CGICalendarValue::setDate(const Date& date)
{
    setValue(descriptionICalendar(date));
}

std::optional<Date> CGICalendarValue::dateValue() const
{
    return hasValue() ? dateWithICalendarString(*value()) : std::nullopt;
}

std::int64_t CGICalendarValue::integerValue() const
{
    using Limits = std::numeric_limits<std::int64_t>;
    const auto text = leadingNumber(value_.viewOrEmpty());
    std::int64_t number = 0;
    const auto error = std::from_chars(text.data(), text.data() + text.size(), number).ec;
    if (error == std::errc::result_out_of_range) {
        return text.starts_with('-') ? Limits::min() : Limits::max();
    }
    return number;
}

float CGICalendarValue::floatValue() const
{
    const auto text = leadingNumber(value_.viewOrEmpty());
    const bool negative = text.starts_with('-');
    const auto digits = negative ? text.substr(1) : text;
    const bool isNumber = !digits.empty()
        && (std::isdigit(static_cast<unsigned char>(digits[0])) || digits[0] == '.');
    if (!isNumber) return 0; // "inf", "nan" and a second sign are no numbers here

    float number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc::invalid_argument) return 0; // "-."
    if (error == std::errc::result_out_of_range) {
        const auto read = digits.substr(0, std::size_t(end - digits.data()));
        number = isHuge(read) ? std::numeric_limits<float>::infinity() : 0;
    }
    return negative ? -number : number;
}

} // namespace Tessel
