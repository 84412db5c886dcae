#include "check/report.h"

#include "check/readable_text.h"
#include "vexil/json/json_value.h"

#include <algorithm>
#include <cstddef>

using vexil::JsonValue;

namespace {

struct OutcomeWords {
    const char* json;
    const char* word; // of four characters
    const char* colour;
};

constexpr OutcomeWords outcomeWords[] = {{"passed", "ok  ", "\033[32m"},
                                         {"failed", "FAIL", "\033[1;31m"},
                                         {"skipped", "skip", "\033[33m"}};

const OutcomeWords& wordsFor(const CheckResult& aResult) {
    return outcomeWords[aResult.outcome.kind];
}

std::ptrdiff_t count(const std::vector<CheckResult>& aResults, Outcome::Kind aKind) {
    return std::count_if(aResults.begin(), aResults.end(),
                         [=](const CheckResult& aResult) { return aResult.outcome.kind == aKind; });
}

ValueHolder makeEntry(const CheckResult& aResult) {
    ValueHolder entry(JsonValue::createObject());
    appendMember(entry, "id", JsonValue::createString(aResult.check->id));
    appendMember(entry, "description", JsonValue::createString(aResult.check->description));
    appendMember(entry, "outcome", JsonValue::createString(wordsFor(aResult).json));
    appendMember(entry, "detail", JsonValue::createString(aResult.outcome.detail));
    return entry;
}

} // namespace

bool isPassed(const std::vector<CheckResult>& aResults) {
    return count(aResults, Outcome::Failed) == 0;
}

std::string makeLine(const CheckResult& aResult, bool aIsColoured) {
    const auto& words = wordsFor(aResult);
    std::string line = words.word;
    if (aIsColoured) line = words.colour + line + "\033[0m";
    std::string id = aResult.check->id;
    id.resize(std::max(id.size(), std::size_t{17}), ' ');
    line += "  " + id + aResult.check->description;
    const auto& [kind, detail] = aResult.outcome;
    if (!detail.empty())
        line += kind == Outcome::Skipped ? " (" + detail + ')' : "\n      " + detail;
    return line + '\n';
}

std::string makeSummary(const std::vector<CheckResult>& aResults) {
    const auto failed = count(aResults, Outcome::Failed);
    const auto skipped = count(aResults, Outcome::Skipped);
    auto line = std::to_string(count(aResults, Outcome::Passed)) + " passed, " +
                std::to_string(failed) + " failed";
    if (skipped > 0) line += ", " + std::to_string(skipped) + " skipped";
    return line + '\n';
}

ValueHolder makeJsonReport(const char* aLibraryName, const std::vector<CheckResult>& aResults) {
    ValueHolder checks(JsonValue::createArray());
    for (const auto& result : aResults) {
        ValueHolder entry = makeEntry(result);
        checks->appendValue(entry.get());
        entry.release();
    }
    ValueHolder report(JsonValue::createObject());
    appendMember(report, "library", JsonValue::createString(readableText(aLibraryName)));
    appendMember(report, "passed", JsonValue::createBoolean(isPassed(aResults)));
    appendMember(report, "checks", checks);
    return report;
}
