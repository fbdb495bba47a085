#pragma once

#include "Tessel/Session/Recurrence/Bounds.h"
#include "Tessel/Session/Recurrence/Instance.h"
#include "Tessel/Session/Recurrence/SeriesPart.h"

#include <vector>

namespace Tessel {

/// The components of one UID: what repeats, or happens once, and what is different on some of its
/// days. Refers to the parts it is made of.
class Series {
public:
    void add(const SeriesPart& part);

    /// Appends the instances that touch [`from`, `to`), at most so many that there are `most`.
    void addInstances(std::int64_t from, std::int64_t to, std::size_t most,
        std::vector<Instance>& instances) const;
    /// The exact bounds as far as they are known.
    Bounds bounds() const;

private:
    /// A date of the recurrence set.
    struct Occurrence {
        std::int64_t local; ///< on the clock of the series
        std::int64_t key;
        const AddedDate* added; ///< null for one of the start or of a rule
    };
    /// How far instances may be from where the rules have them.
    struct Reach {
        std::int64_t length; ///< of the longest, some days more where days go by the clock
        std::int64_t forward;
        std::int64_t backward; ///< not positive
    };

    /// What makes two dates the same instance: the day, or the time in UTC.
    std::int64_t keyOf(const Moment& moment) const;
    bool isOnDay(const Moment& moment) const;
    Moment at(std::int64_t local) const { return {local, main_->start.kind, main_->start.zone}; }
    Reach reach() const;
    std::vector<Occurrence> occurrences(std::int64_t from, std::int64_t to) const;
    void takeOut(std::vector<Occurrence>& occurrences, std::int64_t from, std::int64_t to) const;
    Instance instance(const Occurrence& occurrence) const;
    Instance changed(const SeriesPart& part) const;
    const SeriesPart* changeFor(std::int64_t key) const;

    const SeriesPart* main_ = nullptr;
    std::vector<const SeriesPart*> changes_;
};

/// The series of a text, in the order of their first component.
std::vector<Series> seriesOf(const std::vector<SeriesPart>& parts);

} // namespace Tessel
