#pragma once

#include <optional>
#include <string_view>

namespace Tessel {

/// Walks a date pattern (Unicode TR 35): runs of one ASCII letter are fields, text between
/// apostrophes and everything else is literal, two apostrophes are one.
class DatePattern {
public:
    struct Part {
        char letter = 0; ///< 0 for a literal
        int count = 0; ///< how often the letter stands
        char literal = 0;

        bool isLiteral() const { return letter == 0; }

        /// Whether the field is one of those written in digits only that are known here.
        bool isNumber() const
        {
            switch (letter) {
            case 'Y':
                return count != 2 && count <= 9;
            case 'M':
            case 'd':
            case 'H':
            case 'k':
            case 'm':
            case 's':
                return count <= 2;
            default:
                return false;
            }
        }
    };

    explicit DatePattern(std::string_view pattern)
        : rest_(pattern)
    {
    }

    std::optional<Part> next()
    {
        while (!rest_.empty()) {
            const char c = rest_.front();
            if (c == '\'' && !rest_.starts_with("''")) {
                quoted_ = !quoted_;
                rest_.remove_prefix(1);
                continue;
            }
            if (!quoted_ && ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))) {
                std::size_t count = 1;
                while (count < rest_.size() && rest_[count] == c)
                    ++count;
                rest_.remove_prefix(count);
                return Part {.letter = c, .count = count < 10 ? static_cast<int>(count) : 10};
            }
            rest_.remove_prefix(c == '\'' ? 2 : 1);
            return Part {.literal = c};
        }
        return std::nullopt;
    }

private:
    std::string_view rest_;
    bool quoted_ = false;
};

} // namespace Tessel
