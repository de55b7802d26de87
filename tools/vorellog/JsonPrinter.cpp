#include "support/Utf8.h"
#include "vorel/text/Base64.h"
#include "vorellog/Json.h"
#include "vorellog/Printer.h"

namespace vorellog {

namespace {

void addTime(JsonObject& object, const LogHeader& header, std::string& out) {
    object.addName("time");
    out += '"';
    appendIsoText(out, header.timeMs, header.hasMilliseconds);
    out += '"';
}

void addWriter(JsonObject& object, const Record& record, const LogHeader& header) {
    object.add("host", record.host());
    object.add("process", header.processId);
    object.add("thread", header.threadId);
}

/// Adds the prefix, the message, and whether the record is truncated or damaged. Also adds the bytes of a damaged
/// record that is not valid UTF-8.
void addBody(JsonObject& object, const Record& record, std::string& out) {
    const LogBody body = record.parsedBody();
    if (record.header()) {
        object.add("prefix", body.prefix);
    }
    if (body.truncated) {
        object.addName("truncated");
        out += "true";
    }
    if (record.damage() != Damage::None) {
        object.add("damage", nameOf(record.damage()));
    }
    object.add("message", body.message);
    if (record.damage() != Damage::None && !tools::isUtf8(record.text())) {
        vorel::BaseString<char> encoded;
        vorel::util::Base64::EncodeRange(reinterpret_cast<const unsigned char*>(record.text().data()), 0,
                                         static_cast<unsigned int>(record.text().size()), encoded);
        object.add("bytes", encoded.view());
    }
}

void appendRecord(std::string& out, const Record& record) {
    JsonObject object(out);
    const LogHeader* const header = record.header();
    object.add("type", header ? "record" : "damaged");
    if (header) {
        addTime(object, *header, out);
        addWriter(object, record, *header);
    }
    addBody(object, record, out);
}

/// Every record of the trail must have a header.
void appendTrail(std::string& out, const Trail& trail) {
    JsonObject object(out);
    const Record& first = trail.records.front();
    object.add("type", "exception");
    addTime(object, *first.header(), out);
    addWriter(object, first, *first.header());
    object.add("end", nameOf(trail.end));
    object.addName("records");
    out += '[';
    for (const Record& record : trail.records) {
        out += &record == &first ? "" : ",";
        JsonObject element(out);
        addTime(element, *record.header(), out);
        addBody(element, record, out);
    }
    out += ']';
}

}  // namespace

void JsonPrinter::print(const Record& record, std::string& out) const {
    appendRecord(out, record);
    out += '\n';
}

void JsonPrinter::print(const Trail& trail, std::string& out) const {
    appendTrail(out, trail);
    out += '\n';
}

}  // namespace vorellog
