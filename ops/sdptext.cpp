// SPDX-License-Identifier: MIT
#include "ops/sdptext.h"

namespace ops {

QByteArray textBefore(const QByteArray &text, char separator)
{
    const int at = text.indexOf(separator);
    return at < 0 ? text : text.left(at);
}

QByteArray textBehind(const QByteArray &text, char separator)
{
    const int at = text.indexOf(separator);
    return at < 0 ? QByteArray() : text.mid(at + 1);
}

char SdpLine::type() const
{
    return text.size() >= 2 && text[1] == '=' && text[0] >= 'a' && text[0] <= 'z' ? text[0] : '\0';
}

QByteArray SdpLine::value() const
{
    return text.mid(2);
}

bool SdpLine::isAttribute(const char *name) const
{
    const int length = static_cast<int>(qstrlen(name));
    if (!text.startsWith("a=") || qstrncmp(text.constData() + 2, name, static_cast<uint>(length)) != 0)
        return false;
    return text.size() == length + 2 || text[length + 2] == ':';
}

QByteArray SdpLine::attributeValue() const
{
    return textBehind(text, ':');
}

QByteArray SdpLine::trimmedValue() const
{
    return attributeValue().trimmed();
}

const SdpLine *SdpSection::find(char type) const
{
    for (const SdpLine &line : lines) {
        if (line.type() == type)
            return &line;
    }
    return nullptr;
}

const SdpLine *SdpSection::attribute(const char *name) const
{
    for (const SdpLine &line : lines) {
        if (line.isAttribute(name))
            return &line;
    }
    return nullptr;
}

std::vector<const SdpLine *> SdpSection::attributes(const char *name) const
{
    std::vector<const SdpLine *> found;
    for (const SdpLine &line : lines) {
        if (line.isAttribute(name))
            found.push_back(&line);
    }
    return found;
}

std::vector<const SdpLine *> SdpText::lines() const
{
    std::vector<const SdpLine *> all;
    const auto add = [&all](const SdpSection &section) {
        for (const SdpLine &line : section.lines)
            all.push_back(&line);
    };
    add(session);
    for (const SdpSection &section : media)
        add(section);
    return all;
}

void SdpText::add(const SdpLine &line)
{
    if (line.type() == 'm')
        media.emplace_back();
    (media.empty() ? session : media.back()).lines.push_back(line);
}

SdpText parseSdp(const QByteArray &bytes, const QByteArray &file)
{
    SdpText text;
    text.file = file;
    int number = 0;
    for (int at = 0; at < bytes.size();) {
        const int feed = bytes.indexOf('\n', at);
        const int end = feed < 0 ? bytes.size() : feed;
        SdpLine line{++number, bytes.mid(at, end - at)};
        text.openEnd = feed < 0;
        if (line.text.endsWith('\r'))
            line.text.chop(1);
        else if (feed >= 0)
            text.bareLineFeeds = true;
        text.add(line);
        at = end + 1;
    }
    return text;
}

QByteArray sdpBytes(const SdpText &text)
{
    QByteArray bytes;
    for (const SdpLine *line : text.lines())
        bytes += line->text + "\r\n";
    return bytes;
}

} // namespace ops
