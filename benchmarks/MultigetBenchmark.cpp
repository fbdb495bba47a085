#include "Tessel/CaldavLibrary/Parsers/MRVEventsParser.h"
#include "Tessel/Platform/Foundation/Base/FatalError.h"
#include "benchmarks/Corpus.h"
#include "benchmarks/Table.h"

#include <libxml/parser.h>

using namespace Tessel;
using namespace Tessel::Benchmarks;

int main()
{
    const Data answer(multigetAnswer(corpusEvents));

    const auto parseEvents = [&] {
        const auto events = MRVEventsParser(answer, nullptr).parseEvents();
        if (!events || events->size() != corpusEvents) fatalError("not every event was read");
        keep(events);
    };
    const auto parseXML = [&] {
        const auto bytes = answer.view();
        xmlDoc* const document = xmlReadMemory(
            bytes.data(), int(bytes.size()), nullptr, "UTF-8", XML_PARSE_HUGE | XML_PARSE_NONET);
        if (!document) fatalError("the answer is no XML");
        xmlFreeDoc(document);
    };
    printRow("multiget answer to events", measure(parseEvents, parseXML, 7), "s", timesCost(2.5));
}
