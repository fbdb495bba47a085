#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace Tessel {

/// The properties of a component, or the parameters of a property: a list in order that is used as
/// a `std::vector` is. Nodes that hold neither name nor value, which text can bring by the million
/// (empty lines), are kept as a mere count until the list is looked at one by one; whoever reads
/// text of others walks over `filled`, where they cost nothing.
/// Used by one thread at a time, also when it is only read.
template <typename Node> class CGICalendarNodes {
public:
    ///@{
    /// As of `std::vector`.
    using value_type = std::shared_ptr<Node>;
    using Vector = std::vector<value_type>;
    using iterator = typename Vector::iterator;
    using const_iterator = typename Vector::const_iterator;
    using reference = value_type&;
    using const_reference = const value_type&;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    ///@}

    CGICalendarNodes() = default;
    ///@{
    /// From and to a vector of nodes.
    CGICalendarNodes(Vector nodes)
        : nodes_(std::move(nodes))
    {
    }
    CGICalendarNodes(std::initializer_list<value_type> nodes)
        : nodes_(nodes)
    {
    }
    CGICalendarNodes(const CGICalendarNodes& other)
        : nodes_(other.all())
    {
    }
    CGICalendarNodes(CGICalendarNodes&&) noexcept = default;
    CGICalendarNodes& operator=(CGICalendarNodes other) noexcept
    {
        nodes_.swap(other.nodes_);
        blanks_.swap(other.blanks_);
        return *this;
    }
    ~CGICalendarNodes() = default;

    operator const Vector&() const { return all(); }
    ///@}

    /// Every node that holds a name or a value, in order; null entries and others may be among
    /// them.
    const Vector& filled() const { return nodes_; }

    /// Calls `visit(node)` for each of `filled` and `visitBlanks(count)` for what lies between, in
    /// the order of the list.
    void walk(const auto& visit, const auto& visitBlanks) const
    {
        auto run = blanks_ ? blanks_->begin() : typename Blanks::iterator();
        for (std::size_t i = 0; i <= nodes_.size(); ++i) {
            if (blanks_ && run != blanks_->end() && run->before == i) visitBlanks((run++)->count);
            if (i < nodes_.size()) visit(std::as_const(nodes_[i]));
        }
    }

    ///@{
    /// As of `std::vector`; whoever looks at single entries turns blanks into nodes.
    bool empty() const { return nodes_.empty() && !blanks_; }
    std::size_t size() const
    {
        auto count = nodes_.size();
        if (!blanks_) return count;
        for (const auto& run : *blanks_)
            count += run.count;
        return count;
    }

    iterator begin() { return all().begin(); }
    iterator end() { return all().end(); }
    const_iterator begin() const { return all().cbegin(); }
    const_iterator end() const { return all().cend(); }
    reference operator[](std::size_t index) { return all()[index]; }
    const_reference operator[](std::size_t index) const { return all()[index]; }
    reference at(std::size_t index) { return all().at(index); }
    const_reference at(std::size_t index) const { return all().at(index); }
    reference front() { return all().front(); }
    const_reference front() const { return all().front(); }
    reference back() { return all().back(); }
    const_reference back() const { return all().back(); }
    ///@}

    void push_back(value_type node) { nodes_.push_back(std::move(node)); } ///< as of `std::vector`
    /// As of `std::vector`.
    reference emplace_back(auto&&... arguments)
    {
        return nodes_.emplace_back(std::forward<decltype(arguments)>(arguments)...);
    }
    /// Appends a node without name and value.
    void appendBlank()
    {
        if (!blanks_) blanks_ = std::make_unique<Blanks>();
        const bool continues = !blanks_->empty() && blanks_->back().before == nodes_.size();
        if (!continues) blanks_->push_back({nodes_.size(), 0});
        ++blanks_->back().count;
    }
    ///@{
    /// As of `std::vector`.
    iterator insert(const_iterator position, value_type node)
    {
        return all().insert(position, std::move(node));
    }
    iterator erase(const_iterator position) { return all().erase(position); }
    iterator erase(const_iterator first, const_iterator last) { return all().erase(first, last); }
    void pop_back() { all().pop_back(); }
    void clear() { all().clear(); }
    void reserve(std::size_t count) { nodes_.reserve(count); }
    ///@}

    friend bool operator==(const CGICalendarNodes& a, const CGICalendarNodes& b)
    {
        return a.all() == b.all();
    }

private:
    /// Blank nodes that stand before `nodes_[before]`.
    struct Run {
        std::size_t before;
        std::size_t count;
    };
    using Blanks = std::vector<Run>;

    /// The list with a node for each blank.
    Vector& all() const
    {
        if (blanks_) expand();
        return nodes_;
    }
    void expand() const
    {
        Vector expanded;
        expanded.reserve(size());
        walk([&](const auto& node) { expanded.push_back(node); },
            [&](std::size_t count) {
                for (; count > 0; --count)
                    expanded.push_back(std::make_shared<Node>());
            });
        nodes_ = std::move(expanded);
        blanks_.reset();
    }

    mutable Vector nodes_;
    mutable std::unique_ptr<Blanks> blanks_;
};

} // namespace Tessel
