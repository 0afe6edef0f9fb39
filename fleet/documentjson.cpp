// SPDX-License-Identifier: MIT
#include "fleet/documentjson.h"

#include <QDateTime>

#include <limits>

#include <nlohmann/json.hpp>

namespace fleet {

namespace {

constexpr qint64 kLastMs = 253402300799999; // the end of the year 9999
constexpr const char *kTimeForm = "yyyy-MM-ddTHH:mm:ss.zzzZ";

QByteArray number(qint64 value)
{
    return QByteArray::number(value);
}

} // namespace

QByteArray parseForeign(std::string_view bytes, std::size_t maxBytes, int maxDepth, ops::Json *json)
{
    if (bytes.size() > maxBytes)
        return "longer than " + number(static_cast<qint64>(maxBytes)) + " bytes";
    bool deep = false;
    const auto limit = [&](int depth, ops::Json::parse_event_t, ops::Json &) {
        deep = deep || depth > maxDepth;
        return depth <= maxDepth;
    };
    *json = ops::Json::parse(bytes.begin(), bytes.end(), limit, false);
    if (json->is_discarded() || !json->is_object())
        return "no JSON object in UTF-8";
    const ops::Json *format = memberOf(*json, "format");
    if (!format || !format->is_number_unsigned())
        return "no format is given";
    if (format->get<quint64>() > static_cast<quint64>(kDocumentFormat))
        return "written by a newer version (format " + QByteArray::fromStdString(format->dump()) + ')';
    if (deep)
        return "nested deeper than " + number(maxDepth);
    return {};
}

std::string quoted(const QByteArray &text)
{
    return ops::jsonText(text).dump();
}

std::string authorText(const Author &by, qint64 atMs)
{
    return "\"by\":{\"who\":" + quoted(by.who) + ",\"user\":" + quoted(by.user) +
           ",\"program\":" + quoted(by.program) + ",\"pid\":" + std::to_string(by.pid) +
           "},\"at\":" + quoted(timeText(atMs));
}

bool readAuthor(const ops::Json &json, Author *by, qint64 *atMs)
{
    const ops::Json *author = memberOf(json, "by");
    const ops::Json *pid = author ? memberOf(*author, "pid") : nullptr;
    if (!pid || !pid->is_number_unsigned() || pid->get<quint64>() > std::numeric_limits<quint32>::max())
        return false;
    *by = {textMember(*author, "who"), textMember(*author, "user"), textMember(*author, "program"),
           pid->get<quint32>()};
    *atMs = timeOfText(textMember(json, "at"));
    const auto fits = [](const QByteArray &word) { return word.isEmpty() || plainText(word, kMaxWordBytes); };
    return *atMs >= 0 && plainText(by->who, kMaxWordBytes) && fits(by->user) && fits(by->program);
}

const ops::Json *memberOf(const ops::Json &json, const char *name)
{
    const auto found = json.is_object() ? json.find(name) : json.end();
    return json.is_object() && found != json.end() ? &*found : nullptr;
}

QByteArray textMember(const ops::Json &json, const char *name)
{
    const ops::Json *member = memberOf(json, name);
    return member && member->is_string() ? QByteArray::fromStdString(member->get_ref<const std::string &>())
                                         : QByteArray();
}

bool plainText(const QByteArray &text, int maxBytes)
{
    if (text.isEmpty() || text.size() > maxBytes || !ops::isUtf8(text))
        return false;
    for (int at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const bool second = byte == 0xc2 && static_cast<unsigned char>(text[at + 1]) < 0xa0;
        if (byte < 0x20 || byte == 0x7f || second)
            return false;
    }
    return true;
}

QByteArray timeText(qint64 atMs)
{
    const qint64 within = qBound<qint64>(0, atMs, kLastMs);
    return QDateTime::fromMSecsSinceEpoch(within, Qt::UTC).toString(Qt::ISODateWithMs).toLatin1();
}

qint64 timeOfText(const QByteArray &text)
{
    QDateTime time = QDateTime::fromString(QString::fromLatin1(text), QLatin1String(kTimeForm));
    time.setTimeSpec(Qt::UTC);
    const qint64 atMs = time.isValid() ? time.toMSecsSinceEpoch() : -1;
    return atMs >= 0 && timeText(atMs) == text ? atMs : -1;
}

} // namespace fleet
