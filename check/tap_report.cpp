// SPDX-License-Identifier: MIT
#include "certbridge/name_value_list.h"
#include "check/readable_text.h"
#include "check/report.h"
#include "vexil/json/json_writer.h"

#include <utility>

namespace {

// In a description, "#" would begin a directive.
std::string escape(const std::string& aText) {
    std::string result;
    for (const char character : aText) {
        if (character == '#' || character == '\\') result += '\\';
        result += character == '\n' ? '?' : character;
    }
    return result;
}

// A string in YAML, of which JSON is a part.
std::string quoted(const std::string& aText) {
    const ValueHolder value(vexil::JsonValue::createString(aText));
    return vexil::writeJsonText(*value);
}

class TapReport final : public Report {
public:
    using Report::Report;

    void addResult(const char* aLibraryName, const CheckResult& aResult) override {
        if (mCount++ == 0) write("TAP version 13\n");
        const auto& [kind, detail] = aResult.outcome;
        const bool isOk = kind == Outcome::Passed || kind == Outcome::Skipped;
        const Check& check = *aResult.check;
        std::string line =
            (isOk ? "ok " : "not ok ") + std::to_string(mCount) + " - " +
            escape(readableText(aLibraryName) + ": " + check.id + ", " + check.description);
        if (kind == Outcome::Skipped) line += " # SKIP " + escape(detail);
        line += '\n';
        if (kind != Outcome::Skipped && !detail.empty()) {
            line += "  ---\n  message: " + quoted(detail) + "\n  ...\n";
        }
        write(line);
    }

    void finish(const std::vector<PluginResults>&) override {
        write("1.." + std::to_string(mCount) + '\n');
    }

private:
    int mCount = 0;
};

} // namespace

std::unique_ptr<Report> makeTapReport(Report::Writer aWrite) {
    return std::make_unique<TapReport>(std::move(aWrite));
}
