#pragma once

#include "Tessel/Session/Text/TextTree.h"

#include <map>

namespace Tessel {

/// Changes to the lines of one text, made all at once: what is between them stays byte for byte.
/// Lines that are given are whole ones with their line ends, such as `contentLine` makes them. Of
/// two changes to one line the later one counts; those inside a removed component do not.
class TextPatch {
public:
    explicit TextPatch(TextTree tree)
        : tree_(std::move(tree))
    {
    }

    void replace(const TextLine& line, std::string lines);
    void remove(const TextLine& line) { replace(line, {}); }
    void remove(const TextComponent& component);
    /// Behind what was inserted at this place before.
    void insertBefore(const TextLine& line, std::string_view lines);
    void insertAfter(const TextLine& line, std::string_view lines);

    bool isEmpty() const { return changes_.empty(); }
    /// The changed text; takes time linear in it.
    std::string apply() const { return apply(0, tree_.text().size()); }
    /// That of one component alone.
    std::string apply(const TextComponent& within) const;

private:
    struct Change {
        std::string inserted; ///< before what stands at the place
        std::size_t replacedSize = 0;
        std::string replacement;
    };

    std::string apply(std::size_t begin, std::size_t end) const;

    TextTree tree_;
    std::map<std::size_t, Change> changes_; ///< by their places in the text
};

} // namespace Tessel
