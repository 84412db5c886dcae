#pragma once

#include "vexil/json/character_sources.h"
#include "vexil/json/json_tokenizer.h"
#include "vexil/json/scan_state.h"
#include "vexil/json/scanner.h"
#include "vexil/streams.h"

#include <cstdint>

// Private to the JSON library.

namespace vexil {

struct JsonTokenizer::State {
    State(InputStream& aStream, std::int32_t aFlags)
        : stream(aStream), memory(dynamic_cast<MemoryInputStream*>(&aStream)),
          reportWhitespace((aFlags & ReportWhitespace) != 0) {}

    /// Calls @p aFunction with a scanner over what the stream is and gives its result. Until it is
    /// done nobody else may look at the stream.
    template <class Function>
    auto withScanner(Function aFunction) {
        if (memory != nullptr && MemorySource::isInFront(*memory, scan.current)) {
            MemorySource source(*memory, scan);
            Scanner<MemorySource> scanner(scan, source, reportWhitespace);
            return aFunction(scanner);
        }
        StreamSource source(stream, scan);
        Scanner<StreamSource> scanner(scan, source, reportWhitespace);
        return aFunction(scanner);
    }

    InputStream& stream;
    MemoryInputStream* memory; ///< the stream, if it is exactly of this class
    bool reportWhitespace;
    Scan scan;
};

} // namespace vexil
