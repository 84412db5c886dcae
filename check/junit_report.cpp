// SPDX-License-Identifier: MIT
#include "check/readable_text.h"
#include "check/report.h"

#include <cstddef>
#include <utility>

namespace {

// The value of an attribute in quotation marks. XML cannot represent most control characters.
std::string quoted(const std::string& aText) {
    std::string result = "\"";
    for (const char character : aText) {
        const bool isControl = static_cast<unsigned char>(character) < 0x20;
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += isControl ? '?' : character;
        }
    }
    return result + '"';
}

std::string attribute(const char* aName, const std::string& aValue) {
    return std::string(" ") + aName + '=' + quoted(aValue);
}

std::string attribute(const char* aName, std::size_t aValue) {
    return attribute(aName, std::to_string(aValue));
}

std::string formatSeconds(std::chrono::milliseconds aTime) {
    const std::string fraction = std::to_string(1000 + aTime.count() % 1000).substr(1);
    return std::to_string(aTime.count() / 1000) + '.' + fraction;
}

// Indexed by Outcome::Kind; null for an outcome without an element.
constexpr const char* outcomeElements[] = {nullptr, "failure", "skipped", "error"};

std::string makeTestCase(const std::string& aLibrary, const CheckResult& aResult) {
    const auto& [kind, detail] = aResult.outcome;
    const std::string text = "    <testcase" + attribute("classname", aLibrary) +
                             attribute("name", aResult.check->id) +
                             attribute("time", formatSeconds(aResult.duration));
    const char* const element = outcomeElements[kind];
    if (!element) return text + "/>\n";
    return text + ">\n      <" + element + attribute("message", detail) + "/>\n    </testcase>\n";
}

class JUnitReport final : public Report {
public:
    using Report::Report;

    void finish(const std::vector<PluginResults>& aPlugins) override {
        std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
        for (const PluginResults& results : aPlugins) {
            const std::string library = readableText(results.libraryName);
            text += "  <testsuite" + attribute("name", library) +
                    attribute("tests", results.checks.size()) +
                    attribute("failures", countOutcomes(results, Outcome::Failed)) +
                    attribute("errors", countOutcomes(results, Outcome::Inconclusive)) +
                    attribute("skipped", countOutcomes(results, Outcome::Skipped)) + ">\n";
            for (const CheckResult& result : results.checks) text += makeTestCase(library, result);
            text += "  </testsuite>\n";
        }
        write(text + "</testsuites>\n");
    }
};

} // namespace

std::unique_ptr<Report> makeJUnitReport(Report::Writer aWrite) {
    return std::make_unique<JUnitReport>(std::move(aWrite));
}
