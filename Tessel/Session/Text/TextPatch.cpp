#include "Tessel/Session/Text/TextPatch.h"

namespace Tessel {

void TextPatch::replace(const TextLine& line, std::string lines)
{
    auto& change = changes_[line.record().begin];
    change.replacedSize = line.record().size;
    change.replacement = std::move(lines);
}

void TextPatch::remove(const TextComponent& component)
{
    auto& change = changes_[component.begin().record().begin];
    change.replacedSize = component.raw().size();
    change.replacement.clear();
}

void TextPatch::insertBefore(const TextLine& line, std::string_view lines)
{
    changes_[line.record().begin].inserted += lines;
}

void TextPatch::insertAfter(const TextLine& line, std::string_view lines)
{
    changes_[line.record().begin + line.record().size].inserted += lines;
}

std::string TextPatch::apply(const TextComponent& within) const
{
    const auto begin = within.begin().record().begin;
    return apply(begin, begin + within.raw().size());
}

std::string TextPatch::apply(std::size_t begin, std::size_t end) const
{
    const auto& text = tree_.text();
    auto size = end - begin;
    for (const auto& [place, change] : changes_)
        size += change.inserted.size() + change.replacement.size();

    std::string changed;
    changed.reserve(size);
    auto position = begin;
    for (auto next = changes_.lower_bound(begin); next != changes_.end(); ++next) {
        const auto& [place, change] = *next;
        if (place > end || (place == end && end != text.size())) break;
        if (place < position) continue;
        changed.append(text, position, place - position);
        const bool isUnended
            = place == text.size() && !change.inserted.empty() && !text.ends_with('\n');
        if (isUnended) changed += tree_.lineEnd();
        const bool isInside = place > begin || begin == 0;
        if (isInside) changed += change.inserted;
        changed += change.replacement;
        position = place + change.replacedSize;
    }
    if (position < end) changed.append(text, position, end - position);
    return changed;
}

} // namespace Tessel
