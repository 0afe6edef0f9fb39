// SPDX-License-Identifier: MIT
#include "ops/dump.h"

#include "ops/inputfile.h"
#include "ops/jsontext.h"

#include <QCryptographicHash>
#include <QSet>

#include <nlohmann/json.hpp>

#include <charconv>
#include <iterator>
#include <utility>

namespace ops {

namespace {

constexpr char kFormat[] = "corvel-dump";
constexpr int kVersion = 1;

// No fuzzer would ever find the checksum of what it made up.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
constexpr bool kAnyChecksum = true;
#else
constexpr bool kAnyChecksum = false;
#endif
constexpr int kHashedBytes =
    1 << 16; // handed over at a time: a call for each piece costs more than its bytes

void addNumber(QByteArray &stream, quint32 number)
{
    char digits[16];
    const char *const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    stream.append(digits, static_cast<int>(end - digits));
}

// The length goes before the bytes, so that no two lists of values give the same stream.
void addBytes(QByteArray &stream, const QByteArray &bytes)
{
    addNumber(stream, static_cast<quint32>(bytes.size()));
    stream += ':';
    stream += bytes;
}

void addRow(QByteArray &stream, const Row &row)
{
    addBytes(stream, row.path);
    addBytes(stream, row.name);
    stream += row.value.isText ? 't' : 'n';
    addBytes(stream, row.value.isText ? row.value.text : QByteArray::number(row.value.number));
}

QByteArray quoted(const QByteArray &text)
{
    return QByteArray::fromStdString(jsonText(text).dump());
}

void writeRows(const Snapshot &values, QByteArray &text)
{
    const Row *last = nullptr;
    for (const Row &row : values.rows()) {
        if (!last || last->path != row.path) {
            text += last ? "\n]},\n" : "\n";
            text += "{\"path\": " + quoted(row.path) + ", \"values\": [\n";
        } else {
            text += ",\n";
        }
        last = &row;
        const QByteArray value =
            row.value.isText ? quoted(row.value.text) : QByteArray::number(row.value.number);
        text += '[' + quoted(row.name) + ", " + value + ']';
    }
    text += last ? "\n]}" : "";
}

// Takes the keys out of the document while it is parsed, so that a large one is never in memory twice.
class Reader {
public:
    Outcome<Dump> read(const QByteArray &text);

private:
    bool event(int depth, Json::parse_event_t event, Json &parsed);
    void takeKey(const Json &key);
    void takeRow(const QByteArray &path, const Json &row);
    void takeConfiguration(const Json &configuration);
    void complain(const QByteArray &what);
    Outcome<Dump> finish(const Json &document);

    Dump m_dump;
    std::vector<Row> m_rows;
    QSet<QByteArray> m_names;
    QByteArray m_wrong;
};

void Reader::complain(const QByteArray &what)
{
    if (m_wrong.isEmpty())
        m_wrong = what;
}

void Reader::takeRow(const QByteArray &path, const Json &row)
{
    const bool pair = row.is_array() && row.size() == 2;
    const std::optional<QByteArray> name = pair ? textOfJson(row[0]) : std::nullopt;
    if (!name || name->contains('\0'))
        return complain("a value of " + path + " is no pair of name and value");
    const Json &value = row[1];
    const QByteArray shared = *m_names.insert(*name);
    if (value.is_number_unsigned() && value.get<quint64>() <= 0xffffffffu)
        return m_rows.push_back({path, shared, Value::ofNumber(value.get<quint32>())});
    const std::optional<QByteArray> text = textOfJson(value);
    if (!text)
        return complain(path + ' ' + *name + ": neither a text nor a number from 0 to 4294967295");
    m_rows.push_back({path, shared, Value::ofText(*text)});
}

void Reader::takeKey(const Json &key)
{
    const std::optional<QByteArray> path = textOfJson(key["path"]);
    if (!path || path->contains('\0') || !key["values"].is_array())
        return complain("a key without a path or without values");
    for (const Json &row : key["values"])
        takeRow(*path, row);
}

void Reader::takeConfiguration(const Json &configuration)
{
    const std::optional<QByteArray> name = textOfJson(configuration["name"]);
    if (!name || !configuration["keys"].is_array() || !configuration["keys"].empty())
        return complain("a configuration without a name or with a key that is none");
    m_dump.push_back({*name, Snapshot::fromRows(std::exchange(m_rows, {}))});
}

// Only at the two depths where the format has them, or a value in a key could pretend to be one.
bool Reader::event(int depth, Json::parse_event_t event, Json &parsed)
{
    if (event != Json::parse_event_t::object_end || !parsed.is_object())
        return true;
    const bool key = depth == 4 && parsed.contains("path") && parsed.contains("values");
    const bool configuration = depth == 2 && parsed.contains("name") && parsed.contains("keys");
    if (key)
        takeKey(parsed);
    if (configuration)
        takeConfiguration(parsed);
    return !key && !configuration;
}

Outcome<Dump> Reader::finish(const Json &document)
{
    if (document.is_discarded())
        return wrong("no JSON: cut short, or damaged");
    if (!document.is_object() || !document.contains("format") || document["format"] != kFormat)
        return wrong("no dump of corvelctl");
    if (!document.contains("version") || document["version"] != kVersion)
        return wrong("a dump of another version; this program reads version " + QByteArray::number(kVersion));
    const bool all = document.contains("configurations") && document["configurations"].is_array() &&
                     document["configurations"].empty();
    if (!m_wrong.isEmpty() || !all)
        return wrong(m_wrong.isEmpty() ? QByteArray("a configuration that is none") : m_wrong);
    const bool fits = document.contains("sha256") && document["sha256"] == dumpChecksum(m_dump).toStdString();
    if (!fits && !kAnyChecksum)
        return wrong("the checksum does not fit: the file was changed or damaged after it was written");
    return std::move(m_dump);
}

Outcome<Dump> Reader::read(const QByteArray &text)
{
    const auto callback = [this](int depth, Json::parse_event_t kind, Json &parsed) {
        return event(depth, kind, parsed);
    };
    return finish(Json::parse(text.begin(), text.end(), callback, false));
}

} // namespace

QByteArray dumpChecksum(const Dump &dump)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray stream;
    stream.reserve(2 * kHashedBytes); // or it would grow anew after each piece
    for (const Configuration &configuration : dump) {
        addBytes(stream, configuration.name);
        stream += QByteArray::number(static_cast<qulonglong>(configuration.values.rows().size()));
        stream += ';';
        for (const Row &row : configuration.values.rows()) {
            addRow(stream, row);
            if (stream.size() < kHashedBytes)
                continue;
            hash.addData(stream);
            stream.resize(0);
        }
    }
    hash.addData(stream);
    return hash.result().toHex();
}

QByteArray writeDump(const Dump &dump)
{
    QByteArray text = "{\"format\": \"" + QByteArray(kFormat) +
                      "\",\n\"version\": " + QByteArray::number(kVersion) + ",\n\"sha256\": \"" +
                      dumpChecksum(dump) + "\",\n\"configurations\": [";
    const char *between = "\n";
    for (const Configuration &configuration : dump) {
        text += between + ("{\"name\": " + quoted(configuration.name)) + ", \"keys\": [";
        writeRows(configuration.values, text);
        text += "\n]}";
        between = ",\n";
    }
    return text + "\n]}\n";
}

Outcome<Dump> readDump(const QByteArray &text)
{
    return Reader().read(text);
}

Outcome<Dump> readDumpFile(const QByteArray &file)
{
    const Outcome<QByteArray> text = readInput(file);
    if (!text)
        return text.failure();
    Outcome<Dump> dump = readDump(*text);
    return dump ? dump : Outcome<Dump>(wrong(file + ": " + dump.failure().text));
}

} // namespace ops
