#include "Tessel/icalendar/CGICalendar.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/Libical.h"
#include "benchmarks/PlainLines.h"
#include "benchmarks/Table.h"

#include <string>
#include <vector>

using namespace Tessel;
using namespace Tessel::Benchmarks;

namespace {

void readResources(const std::vector<std::string>& resources)
{
    const auto ours = [&] {
        for (const auto& text : resources)
            keep(CGICalendar::initWithString(text));
    };
    const auto libical = [&] {
        for (const auto& text : resources)
            keep(libicalTree(text));
    };
    const auto plain = [&] {
        for (const auto& text : resources)
            keep(unfoldAndSplit(text));
    };
    const auto what = "text to tree, " + std::to_string(resources.size()) + " resources of 2 KB: ";
    printRow(what + "libical", measure(ours, libical, 7), "s", timesFaster(6));
    printRow(what + "split", measure(ours, plain, 15), "s", timesCost(1.6));
}

void readFile(const std::string& file)
{
    const auto ours = [&] { keep(CGICalendar::initWithString(file)); };
    const auto libical = [&] { keep(libicalTree(file)); };
    const auto plain = [&] { keep(unfoldAndSplit(file)); };
    printRow(
        "text to tree, one file of 20 MB: libical", measure(ours, libical, 3), "s", timesFaster(3));
    printRow(
        "text to tree, one file of 20 MB: split", measure(ours, plain, 7), "s", timesCost(1.6));
}

template <typename Parse>
double liveBytesPerEvent(const std::vector<std::string>& resources, const Parse& parse)
{
    std::vector<decltype(parse(resources[0]))> trees;
    trees.reserve(resources.size());
    const auto before = liveHeapBytes();
    for (const auto& text : resources)
        trees.push_back(parse(text));
    return double(liveHeapBytes() - before) / double(resources.size());
}

void holdResources(const std::vector<std::string>& resources)
{
    const auto ours = liveBytesPerEvent(
        resources, [](const std::string& text) { return CGICalendar::initWithString(text); });
    const auto libical = liveBytesPerEvent(resources, libicalTree);
    printRow("live heap per event: libical", {ours, libical}, "B", timesCost(0.5));
}

void write(const std::string& small, const std::string& big)
{
    const auto tree = CGICalendar::initWithString(big);
    const auto libical = libicalTree(big);
    const auto lines = unfoldAndSplit(big);
    const auto ours = [&] { keep(tree->description()); };
    const auto opponent = [&] { keep(libicalText(libical)); };
    const auto plain = [&] { keep(appendAndFold(lines)); };
    printRow("tree to text, 20 MB: libical", measure(ours, opponent, 3), "s", timesFaster(4));
    printRow("tree to text, 20 MB: plain appending", measure(ours, plain, 9), "s", timesCost(2));

    const auto smallTree = CGICalendar::initWithString(small);
    const auto oursSmall = [&] { keep(smallTree->description()); };
    printRow("tree to text, 20 MB: 1 MB", measure(ours, oursSmall, 9), "s", timesCost(25));
}

} // namespace

int main()
{
    const auto resources = eventResources(1000);
    const auto file = calendarFile(corpusEvents);
    readResources(resources);
    readFile(file);
    holdResources(resources);
    write(calendarFile(corpusEvents / 20), file);
}
