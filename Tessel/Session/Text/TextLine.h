#pragma once

#include "Tessel/Platform/Foundation/Base/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel {

/// A parameter of a content line (RFC 5545, 3.2): its values without quotes, RFC 6868 decoded.
struct TextParameter {
    std::string name; ///< as written
    std::vector<std::string> values; ///< at least one, which may be empty

    friend bool operator==(const TextParameter&, const TextParameter&) = default;
};

using TextParameters = std::vector<TextParameter>; ///< in the order of the line

/// Whether two names are the same but for the case of ASCII letters.
TESSEL_EXPORT bool isSameName(std::string_view a, std::string_view b);

/// With ASCII letters as capitals.
TESSEL_EXPORT std::string inCapitals(std::string text);

/// One content line (RFC 5545, 3.1) of a `TextTree`, valid as long as a copy of the tree is. Its
/// parts are read when they are asked for.
class TESSEL_EXPORT TextLine {
public:
    /// What a tree keeps of each line: places in its text.
    struct Record {
        std::uint32_t begin; ///< its first byte
        std::uint32_t size; ///< folds and line end included
        std::uint32_t component; ///< of BEGIN and END: which one
        std::uint16_t nameSize; ///< 0 for a line without a name
        bool isFolded; ///< it has a fold
        bool isNameFolded; ///< within its name
        bool isBegin; ///< a BEGIN with its END
        bool isEnd; ///< the END of one
    };

    /// Made by trees.
    TextLine(const char* text, const Record& record)
        : text_(text)
        , record_(&record)
    {
    }

    /// All bytes, folds and line end included.
    std::string_view raw() const { return {text_ + record_->begin, record_->size}; }
    /// Without folds and line end.
    std::string unfolded() const;
    /// Whether the line has this name, in any case; "" for a line without one, such as a blank.
    bool is(std::string_view name) const;
    /// As written.
    std::string name() const;
    /// All after the colon that ends name and parameters, unfolded and otherwise as written:
    /// `plainText` takes the escapes out. Empty for a line without a colon.
    std::string value() const;
    /// The same as a view into the text or, where the line is folded, into `buffer`.
    std::string_view value(std::string& buffer) const;
    TextParameters parameters() const; ///< in the order of the line
    /// The first value of a parameter, whose name may have any case; none when it is not there.
    std::optional<std::string> parameter(std::string_view name) const;

    const Record& record() const { return *record_; } ///< for trees and patches

    friend bool operator==(const TextLine&, const TextLine&) = default;

private:
    /// The line without folds and line end: a view into the text or into `buffer`.
    std::string_view content(std::string& buffer) const;

    const char* text_;
    const Record* record_;
};

} // namespace Tessel
