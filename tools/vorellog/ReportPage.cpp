#include <algorithm>
#include <map>
#include <tuple>

#include "support/Visible.h"
#include "vorellog/Json.h"
#include "vorellog/Report.h"
#include "vorellog/ReportTemplate.h"

namespace vorellog {

namespace {

/// Adds a text, with escapes for the characters that could hide or reorder other text.
void addVisible(JsonObject& object, std::string_view name, std::string_view text) {
    std::string shown;
    for (;;) {  // line feeds are not escaped
        const std::size_t end = text.find('\n');
        tools::appendVisible(shown, text.substr(0, end));
        if (end == std::string_view::npos) {
            break;
        }
        shown += '\n';
        text.remove_prefix(end + 1);
    }
    object.add(name, shown);
}

/// Adds a time as milliseconds of the local clock.
void addTime(JsonObject& object, std::string_view name, LocalMs time, std::string& out) {
    object.addName(name);
    out += std::to_string(time);
}

/// Appends an array. `append(index)` appends an element.
template <class Append>
void appendArray(std::string& out, std::size_t size, Append&& append) {
    out += '[';
    for (std::size_t index = 0; index != size; ++index) {
        out += index == 0 ? "" : ",";
        append(index);
    }
    out += ']';
}

/// Adds an array with two elements for each step of `all` in which `steps` has records: the number of the step in
/// `all`, from 0, and the count of its records.
void addSteps(JsonObject& object, const Histogram& steps, const Histogram& all, std::string& out) {
    const LocalMs start = all.steps().front().from;
    std::map<LocalMs, unsigned long long> counts;
    for (const Histogram::Step& step : steps.steps()) {
        if (step.records != 0) {
            counts[(step.from - start) / all.stepMs()] += step.records;
        }
    }
    object.addName("steps");
    out += '[';
    for (const auto& [step, count] : counts) {
        out += (out.back() == '[' ? "" : ",") + std::to_string(step) + ',' + std::to_string(count);
    }
    out += ']';
}

/// The order of processes on the page: by number of records, then by the time of the last record, both descending.
bool comesBefore(const Tally& a, const Tally& b) {
    return std::tie(b.records, b.lastMs) < std::tie(a.records, a.lastMs);
}

}  // namespace

std::string Report::page(std::string_view name) const {
    std::string page;
    for (const std::string_view piece : kReportPieces) {
        page += piece;
    }
    page.replace(page.find(kReportDataPlace), kReportDataPlace.size(), data(name));
    return page;
}

std::string Report::data(std::string_view name) const {
    std::string out;
    {
        JsonObject object(out);
        addVisible(object, "name", name);
        object.add("records", m_all.records);
        object.add("ungrouped", m_groups.ungrouped());
        object.add("groupCount", m_groups.size());
        object.add("processCount", m_processes.size());
        for (const Damage each : {Damage::Cut, Damage::MidLine, Damage::NoHeader, Damage::BadUtf8}) {
            object.add(nameOf(each), m_damage[static_cast<std::size_t>(each)]);
        }
        addTime(object, "first", m_all.firstMs, out);
        addTime(object, "last", m_all.lastMs, out);
        object.add("stepSeconds", static_cast<unsigned long long>(m_steps.stepMs() / kSecond));
        object.add("stepCount", m_steps.steps().size());
        if (m_all.records != 0) {
            addTime(object, "start", m_steps.steps().front().from, out);
            const std::vector<ProcessNumber> shown = shownProcesses();
            object.addName("prefixes");
            appendPrefixes(out, m_steps);
            object.addName("processes");
            appendProcesses(out, shown);
            object.addName("groups");
            appendGroups(out, m_steps, shown);
        }
    }
    // Only "<" can begin a tag that ends the script element. In JSON, "<" occurs only in strings, where it can be
    // escaped.
    std::string safe;
    safe.reserve(out.size());
    for (const char c : out) {
        if (c == '<') {
            safe += "\\u003c";
        } else {
            safe += c;
        }
    }
    return safe;
}

void Report::appendPrefixes(std::string& out, const Histogram& all) const {
    std::vector<std::pair<std::string_view, const Series*>> series;
    for (const auto& [prefix, each] : m_ofPrefix) {
        series.emplace_back(prefix, &each);
    }
    std::sort(series.begin(), series.end(), [](const auto& a, const auto& b) {
        return std::tie(b.second->records, a.first) < std::tie(a.second->records, b.first);
    });
    const std::size_t shown = std::min(series.size(), kMaxPrefixes);
    unsigned long long counted = 0;
    appendArray(out, shown, [&](std::size_t index) {
        const auto& [prefix, each] = series[index];
        counted += each->records;
        JsonObject object(out);
        addVisible(object, "name", prefix);
        object.add("records", each->records);
        addSteps(object, each->steps, all, out);
    });
    if (counted != m_all.records) {
        out.pop_back();
        out +=
            R"(,{"name":")" + std::string(kOthers) + R"(","records":)" + std::to_string(m_all.records - counted) + ',';
        Histogram others(kMaxSteps);
        for (std::size_t index = shown; index <= series.size(); ++index) {
            const Series& each = index == series.size() ? m_otherPrefixes : *series[index].second;
            for (const Histogram::Step& step : each.steps.steps()) {
                others.add(step.from, step.records);
            }
        }
        std::string steps;
        {
            JsonObject object(steps);
            addSteps(object, others, all, steps);
        }
        out += steps.substr(1) + ']';
    }
}

/// The processes with the most records.
std::vector<ProcessNumber> Report::shownProcesses() const {
    std::vector<ProcessNumber> numbers(m_ofProcess.size());
    for (std::size_t index = 0; index != numbers.size(); ++index) {
        numbers[index] = static_cast<ProcessNumber>(index);
    }
    std::stable_sort(numbers.begin(), numbers.end(),
                     [this](ProcessNumber a, ProcessNumber b) { return comesBefore(m_ofProcess[a], m_ofProcess[b]); });
    numbers.resize(std::min(numbers.size(), kMaxProcesses));
    return numbers;
}

void Report::appendProcesses(std::string& out, const std::vector<ProcessNumber>& shown) const {
    appendArray(out, shown.size(), [&](std::size_t index) {
        const Tally& count = m_ofProcess[shown[index]];
        JsonObject object(out);
        addVisible(object, "name", m_processes.nameOf(shown[index]));
        object.add("records", count.records);
        addTime(object, "first", count.firstMs, out);
        addTime(object, "last", count.lastMs, out);
    });
}

void Report::appendGroups(std::string& out, const Histogram& all, const std::vector<ProcessNumber>& shown) const {
    std::vector<const MessageGroups::Group*> groups = m_groups.sorted();
    groups.resize(std::min(groups.size(), kMaxGroups));
    std::size_t exampleBytes = 0;
    const auto appendExample = [&](const Example& example) {
        const std::size_t before = out.size();
        JsonObject object(out);
        addTime(object, "time", example.timeMs, out);
        addVisible(object, "writer", example.writer);
        object.add("end", nameOf(example.end));
        object.addName("messages");
        appendArray(out, example.messages.size(), [&](std::size_t index) {
            JsonObject message(out);
            addVisible(message, "text", example.messages[index]);
        });
        exampleBytes += out.size() - before;
    };
    appendArray(out, groups.size(), [&](std::size_t index) {
        const MessageGroups::Group& group = *groups[index];
        const Details& details = m_details[group.number];
        JsonObject object(out);
        object.add("entries", group.entries.records);
        addTime(object, "first", group.entries.firstMs, out);
        addTime(object, "last", group.entries.lastMs, out);
        addVisible(object, "prefix", group.prefix);
        addVisible(object, "message", group.message);
        object.addName("trail");
        appendArray(out, group.trail.size(), [&](std::size_t step) {
            JsonObject message(out);
            addVisible(message, "text", group.trail[step]);
        });
        object.add("processCount", group.processes.size());
        object.addName("processes");
        out += '[';
        for (std::size_t process = 0; process != shown.size(); ++process) {
            if (group.processes.contains(shown[process])) {
                out += (out.back() == '[' ? "" : ",") + std::to_string(process);
            }
        }
        out += ']';
        addSteps(object, details.steps, all, out);
        object.addName("examples");
        // The newest example is directly before the position `next` of the ring.
        const std::size_t kept = details.examples.size();
        appendArray(out, exampleBytes < kMaxExampleBytes ? kept : std::min<std::size_t>(kept, 1), [&](std::size_t age) {
            appendExample(details.examples[(details.next + 2 * kept - 1 - age) % kept]);
        });
    });
}

}  // namespace vorellog
