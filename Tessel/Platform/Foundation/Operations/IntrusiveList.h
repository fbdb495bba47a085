#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace Tessel {

/// What a member of an `IntrusiveList` derives from: its place in the one list that it can be in.
template <class Member> struct IntrusiveLink {
    std::shared_ptr<Member> held; ///< the member itself, while it is in
    Member* previous = nullptr;
    Member* next = nullptr;
};

/// Objects in order of adding, held for as long as they are in. The links lie within the members,
/// so that adding allocates nothing and removing takes constant time.
template <class Member> class IntrusiveList {
public:
    bool isEmpty() const { return size_ == 0; }
    std::size_t size() const { return size_; }
    Member* first() const { return first_; }

    void append(std::shared_ptr<Member> held)
    {
        auto& member = *held;
        member.held = std::move(held);
        member.previous = std::exchange(last_, &member);
        (member.previous ? member.previous->next : first_) = &member;
        ++size_;
    }

    /// Gives what the member held, for the caller to let go of.
    std::shared_ptr<Member> remove(Member& member)
    {
        (member.previous ? member.previous->next : first_) = member.next;
        (member.next ? member.next->previous : last_) = member.previous;
        member.previous = member.next = nullptr;
        --size_;
        return std::move(member.held);
    }

private:
    Member* first_ = nullptr;
    Member* last_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace Tessel
