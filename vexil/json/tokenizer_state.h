// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/character_sources.h"
#include "vexil/json/json_tokenizer.h"
#include "vexil/json/scan_state.h"
#include "vexil/json/scanner.h"
#include "vexil/streams.h"

#include <cstdint>

// Private to the JSON library.

namespace vexil {

/// State of a JsonTokenizer: the stream and the current token.
struct JsonTokenizer::State {
    State(InputStream& aStream, std::int32_t aFlags)
        : stream(aStream), memory(dynamic_cast<MemoryInputStream*>(&aStream)),
          reportWhitespace((aFlags & ReportWhitespace) != 0) {}

    /// Calls @p aFunction with a scanner over the stream and returns its result. The stream must
    /// not be used otherwise until then.
    template <class Function>
    auto withScanner(Function aFunction) {
        if (memory != nullptr && MemorySource::isInStep(*memory, scan.lookahead)) {
            MemorySource source(*memory, scan);
            Scanner<MemorySource> scanner(scan, source, reportWhitespace);
            return aFunction(scanner);
        }
        StreamSource source(stream, scan);
        Scanner<StreamSource> scanner(scan, source, reportWhitespace);
        return aFunction(scanner);
    }

    InputStream& stream;       ///< borrowed
    MemoryInputStream* memory; ///< the stream if it is of this class, which is final; or null
    bool reportWhitespace;
    ScanState scan;
};

} // namespace vexil
