#pragma once

#include "Tessel/Session/Outcome/Result.h"
#include "Tessel/Session/Text/TextLine.h"

#include <cstddef>
#include <iterator>
#include <memory>

namespace Tessel {

/// What is kept of a text beside the text itself: where its lines and components stand.
struct TextIndex {
    /// Where a component stands, by the numbers of lines and components.
    struct Component {
        std::uint32_t first; ///< its BEGIN among the lines
        std::uint32_t last; ///< its END
        std::uint32_t next; ///< the component after it and all that it holds
        std::uint32_t parent; ///< `none` for an outermost one
    };
    static constexpr std::uint32_t none = 0xFFFF'FFFF; ///< no component

    std::string text; ///< all of it
    std::vector<TextLine::Record> lines; ///< in order, all of the text
    std::vector<Component> components; ///< in the order of their BEGIN

    /// By its number.
    TextLine line(std::uint32_t index) const { return {text.data(), lines[index]}; }
};

/// One component of a `TextTree`, from BEGIN to END, valid as long as a copy of the tree is.
class TESSEL_EXPORT TextComponent {
public:
    template <class Item> class Range;

    /// Made by trees.
    TextComponent(const TextIndex& index, std::uint32_t number)
        : index_(&index)
        , number_(number)
    {
    }

    bool is(std::string_view name) const; ///< in any case
    std::string name() const; ///< as written
    /// All bytes from BEGIN up to the line end of END.
    std::string_view raw() const;
    TextLine begin() const { return index_->line(place().first); } ///< its BEGIN
    TextLine end() const { return index_->line(place().last); } ///< its END

    /// Its own lines, in the order of the text: not BEGIN and END, and none of its components'.
    Range<TextLine> lines() const;
    /// The components directly in it.
    Range<TextComponent> components() const;
    /// The first of its own lines that has this name.
    std::optional<TextLine> line(std::string_view name) const;

    friend bool operator==(const TextComponent&, const TextComponent&) = default;

private:
    const TextIndex::Component& place() const { return index_->components[number_]; }

    const TextIndex* index_;
    std::uint32_t number_;
};

/// Lines or components one after the other, each made when it is reached.
template <class Item> class TextComponent::Range {
public:
    class Iterator {
    public:
        using value_type = Item;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        Iterator(const TextIndex& index, std::uint32_t position, std::uint32_t end)
            : index_(&index)
            , position_(position)
            , end_(end)
        {
            skip();
        }

        Item operator*() const
        {
            if constexpr (std::is_same_v<Item, TextLine>)
                return index_->line(position_);
            else
                return {*index_, position_};
        }
        Iterator& operator++()
        {
            if constexpr (std::is_same_v<Item, TextLine>)
                ++position_;
            else
                position_ = index_->components[position_].next;
            skip();
            return *this;
        }
        Iterator operator++(int)
        {
            auto before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return position_ == other.position_; }
        bool operator==(std::default_sentinel_t) const { return position_ >= end_; }

    private:
        void skip()
        {
            if constexpr (std::is_same_v<Item, TextLine>) {
                while (position_ < end_ && index_->lines[position_].isBegin)
                    position_ = index_->components[index_->lines[position_].component].last + 1;
            }
        }

        const TextIndex* index_ = nullptr;
        std::uint32_t position_ = 0;
        std::uint32_t end_ = 0;
    };

    /// Made by components and trees.
    Range(const TextIndex& index, std::uint32_t first, std::uint32_t end)
        : begin_(index, first, end)
    {
    }
    Iterator begin() const { return begin_; } ///< the first
    std::default_sentinel_t end() const { return {}; } ///< after the last

private:
    Iterator begin_;
};

/// An iCalendar text (RFC 5545) as it is, with an index of its components and lines. Nothing of it
/// is changed or left out: bytes that are no UTF-8, NUL, a byte-order mark, line ends of any kind,
/// blank lines and lines without a name stay where they are. Immutable; copying is cheap.
class TESSEL_EXPORT TextTree {
public:
    /// Takes time linear in the text. `malformed`, with the number of the line, where BEGIN and END
    /// do not match, where components nest deeper than `Limits::textDepth`, and where the text has
    /// no component, more than `Limits::textBytes` or more than `Limits::textLines`.
    static Result<TextTree> read(std::string text);

    const std::string& text() const { return index_->text; } ///< as it was read
    const TextIndex& index() const { return *index_; } ///< for patches of the text

    /// The outermost components: one VCALENDAR, as a rule.
    TextComponent::Range<TextComponent> components() const;
    /// The line end of the first line, with which new ones are written: CR LF in a text without.
    std::string_view lineEnd() const;

private:
    explicit TextTree(std::shared_ptr<const TextIndex> index)
        : index_(std::move(index))
    {
    }

    std::shared_ptr<const TextIndex> index_;
};

} // namespace Tessel
