#include <algorithm>

#include "vorellog/Json.h"
#include "vorellog/Summary.h"

namespace vorellog {

namespace {

void addTexts(JsonObject& object, std::string_view name, const std::vector<std::string_view>& texts, std::string& out) {
    object.addName(name);
    out += '[';
    for (const std::string_view& text : texts) {
        out += &text == texts.data() ? "" : ",";
        appendJson(out, text);
    }
    out += ']';
}

/// Adds the times of the first and the last record, with milliseconds if their lines have them.
void addSpan(JsonObject& object, std::string_view first, std::string_view last, const Tally& tally) {
    object.add(first, isoText(tally.firstMs, tally.firstHasMilliseconds));
    object.add(last, isoText(tally.lastMs, tally.lastHasMilliseconds));
}

void appendGroup(std::string& out, const MessageGroups::Group& group) {
    JsonObject object(out);
    object.add("type", "group");
    object.add("entries", group.entries.records);
    addSpan(object, "first", "last", group.entries);
    object.add("processes", group.processes.size());
    if (group.processes.hasOthers()) {
        object.addName("moreProcesses");
        out += "true";
    }
    object.add("prefix", group.prefix);
    object.add("message", group.message);
    if (!group.trail.empty()) {
        addTexts(object, "trail", group.trail, out);
    }
    object.add("writer", group.writer);
    object.add("example", group.example);
}

void appendStep(std::string& out, const Histogram::Step& step, LocalMs length) {
    JsonObject object(out);
    object.add("type", "step");
    object.add("from", isoText(step.from, false));
    object.add("seconds", static_cast<unsigned long long>(length / kSecond));
    object.add("records", step.records);
}

}  // namespace

std::string Summary::json(std::optional<std::size_t> top) const {
    std::string out;
    appendHead(out);
    const std::vector<const MessageGroups::Group*> groups = m_groups.sorted();
    for (std::size_t index = 0; index != std::min(groups.size(), top.value_or(groups.size())); ++index) {
        out += '\n';
        appendGroup(out, *groups[index]);
    }
    const auto appendRow = [&out](std::string_view process, std::string_view prefix, const Row& row) {
        out += '\n';
        JsonObject object(out);
        object.add("type", "count");
        object.add("process", process);
        object.add("prefix", prefix);
        object.add("records", row.records);
        addSpan(object, "first", "last", row);
    };
    const std::vector<ShownRow> rows = sortedRows();
    for (std::size_t index = 0; index != std::min(rows.size(), top.value_or(rows.size())); ++index) {
        appendRow(rows[index].process, rows[index].prefix, rows[index].row);
    }
    if (m_others.records != 0) {
        appendRow(kOthers, {}, m_others);
    }
    for (const Histogram::Step& step : m_histogram.steps()) {
        out += '\n';
        appendStep(out, step, m_histogram.stepMs());
    }
    return out + '\n';
}

/// Appends the totals. "groups" is the number of all groups, without the limit `top`.
void Summary::appendHead(std::string& out) const {
    const auto ofKind = [this](Damage kind) { return m_damage[static_cast<std::size_t>(kind)]; };
    JsonObject object(out);
    object.add("type", "summary");
    object.add("entries", m_entries);
    object.add("records", m_all.records);
    object.add("processes", m_processes.size());
    if (m_hasMoreProcesses) {
        object.addName("moreProcesses");
        out += "true";
    }
    if (m_all.records != 0) {
        addSpan(object, "from", "to", m_all);
    }
    object.add("cut", ofKind(Damage::Cut));
    object.add("midLine", ofKind(Damage::MidLine));
    object.add("noHeader", ofKind(Damage::NoHeader));
    object.add("badUtf8", ofKind(Damage::BadUtf8));
    object.add("groups", m_groups.size());
    object.add("ungrouped", m_groups.ungrouped());
}

}  // namespace vorellog
