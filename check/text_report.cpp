// SPDX-License-Identifier: MIT
#include "check/readable_text.h"
#include "check/report.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace {

struct OutcomeWords {
    const char* word; // of four characters
    const char* summary;
    const char* colour;
};

// Indexed by Outcome::Kind.
constexpr OutcomeWords outcomeWords[] = {{"ok  ", "passed", "\033[32m"},
                                         {"FAIL", "failed", "\033[1;31m"},
                                         {"skip", "skipped", "\033[33m"},
                                         {"????", "inconclusive", "\033[1;35m"}};

std::string makeStart(const char* aWord, const Check& aCheck) {
    std::string id = aCheck.id;
    id.resize(std::max(id.size(), std::size_t{17}), ' ');
    return std::string(aWord) + "  " + id + aCheck.description;
}

bool isColourWanted() {
    const char* const wish = std::getenv("NO_COLOR");
    return !wish || !*wish;
}

class TextReport final : public Report {
public:
    TextReport(const Options& aOptions, bool aIsTerminal, Writer aWrite)
        : Report(std::move(aWrite)), mIsOnlyFailed(aOptions.onlyFailed),
          mIsHeaded(aOptions.libraryNames.size() > 1), mIsTerminal(aIsTerminal),
          mIsColoured(aIsTerminal && isColourWanted()) {}

    void beginPlugin(const char* aLibraryName) override {
        if (mIsHeaded) write(readableText(aLibraryName) + ":\n");
    }

    void showProgress(const Check& aCheck, std::chrono::seconds aTime) override {
        if (!mIsTerminal) return;
        write(clearLine + makeStart("....", aCheck) + ", " + std::to_string(aTime.count()) + " s");
        mIsProgressShown = true;
    }

    void addResult(const char*, const CheckResult& aResult) override {
        if (mIsProgressShown) write(clearLine);
        mIsProgressShown = false;
        const auto& [kind, detail] = aResult.outcome;
        if (mIsOnlyFailed && (kind == Outcome::Passed || kind == Outcome::Skipped)) return;
        const OutcomeWords& words = outcomeWords[kind];
        std::string line = makeStart(words.word, *aResult.check);
        if (mIsColoured) line.insert(4, "\033[0m").insert(0, words.colour);
        if (!detail.empty()) {
            line += kind == Outcome::Skipped ? " (" + detail + ')' : "\n      " + detail;
        }
        write(line + '\n');
    }

    void endPlugin(const PluginResults& aResults) override {
        std::string line = std::to_string(countOutcomes(aResults, Outcome::Passed)) + " passed, " +
                           std::to_string(countOutcomes(aResults, Outcome::Failed)) + " failed";
        for (const auto kind : {Outcome::Skipped, Outcome::Inconclusive}) {
            const auto count = countOutcomes(aResults, kind);
            if (count > 0) line += ", " + std::to_string(count) + ' ' + outcomeWords[kind].summary;
        }
        write(line + '\n');
    }

private:
    static constexpr const char* clearLine = "\r\033[K";

    bool mIsOnlyFailed, mIsHeaded, mIsTerminal, mIsColoured;
    bool mIsProgressShown = false;
};

} // namespace

std::unique_ptr<Report> makeTextReport(const Options& aOptions, bool aIsTerminal,
                                       Report::Writer aWrite) {
    return std::make_unique<TextReport>(aOptions, aIsTerminal, std::move(aWrite));
}
