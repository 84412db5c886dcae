// SPDX-License-Identifier: MIT
#include "certbridge/name_value_list.h"
#include "check/readable_text.h"
#include "check/report.h"
#include "vexil/json/json_writer.h"

#include <utility>

using vexil::JsonValue;

namespace {

// Indexed by Outcome::Kind.
constexpr const char* outcomeNames[] = {"passed", "failed", "skipped", "inconclusive"};

void appendText(ValueHolder& aObject, const char* aName, const std::string& aText) {
    appendMember(aObject, aName, JsonValue::createString(aText));
}

ValueHolder makeEntry(const CheckResult& aResult) {
    ValueHolder entry(JsonValue::createObject());
    appendText(entry, "id", aResult.check->id);
    appendText(entry, "description", aResult.check->description);
    appendText(entry, "outcome", outcomeNames[aResult.outcome.kind]);
    appendText(entry, "detail", aResult.outcome.detail);
    return entry;
}

class JsonReport final : public Report {
public:
    using Report::Report;

    void endPlugin(const PluginResults& aResults) override {
        ValueHolder checks(JsonValue::createArray());
        for (const CheckResult& result : aResults.checks) {
            ValueHolder entry = makeEntry(result);
            checks->appendValue(entry.get());
            static_cast<void>(entry.release());
        }
        ValueHolder report(JsonValue::createObject());
        appendText(report, "library", readableText(aResults.libraryName));
        appendMember(report, "passed", JsonValue::createBoolean(isPassed(aResults)));
        appendMember(report, "checks", checks);
        write(vexil::writeJsonText(*report) + '\n');
    }
};

} // namespace

std::unique_ptr<Report> makeJsonReport(Report::Writer aWrite) {
    return std::make_unique<JsonReport>(std::move(aWrite));
}
