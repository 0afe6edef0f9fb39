// SPDX-License-Identifier: MIT
#include "mutations.h"

#include "campaign.h"

#include <algorithm>

namespace {

constexpr int pageBytes = 1024;
constexpr int headerBytes = 100;
constexpr int logHeaderBytes = 32;
constexpr int frameBytes = 24 + pageBytes;

int below(int limit)
{
    return int(campaign::draw(std::max(1, limit)));
}

char anyByte()
{
    return char(below(256));
}

int anyPage(const QByteArray &bytes)
{
    return below(bytes.size() / pageBytes) * pageBytes;
}

void scatter(QByteArray &bytes, int from, int length)
{
    for (int at = from; at < std::min(from + length, bytes.size()); ++at)
        bytes[at] = anyByte();
}

// -- the database

void headerByte(QByteArray &bytes)
{
    bytes[below(headerBytes)] = anyByte();
}

void headerNoise(QByteArray &bytes)
{
    scatter(bytes, below(headerBytes), 1 + below(headerBytes));
}

void oneByte(QByteArray &bytes)
{
    bytes[below(bytes.size())] = anyByte();
}

void oneBit(QByteArray &bytes)
{
    const int at = below(bytes.size());
    bytes[at] = char(bytes.at(at) ^ (1 << below(8)));
}

void pageOfZeros(QByteArray &bytes)
{
    bytes.replace(anyPage(bytes), pageBytes, QByteArray(pageBytes, '\0'));
}

void pageOfNoise(QByteArray &bytes)
{
    scatter(bytes, anyPage(bytes), pageBytes);
}

void pageOfAnother(QByteArray &bytes)
{
    const QByteArray other = bytes.mid(anyPage(bytes), pageBytes);
    bytes.replace(anyPage(bytes), pageBytes, other);
}

void pageHead(QByteArray &bytes)
{
    scatter(bytes, anyPage(bytes), 1 + below(12));
}

void cellPointers(QByteArray &bytes)
{
    scatter(bytes, anyPage(bytes) + 8, 1 + below(40));
}

void noiseAnywhere(QByteArray &bytes)
{
    scatter(bytes, below(bytes.size()), 1 + below(3000));
}

void cutAnywhere(QByteArray &bytes)
{
    bytes.truncate(below(bytes.size()));
}

void cutAtAPage(QByteArray &bytes)
{
    bytes.truncate(anyPage(bytes));
}

void longer(QByteArray &bytes)
{
    const int from = bytes.size();
    bytes.append(QByteArray(1 + below(5000), '\0'));
    if (below(2) == 0)
        scatter(bytes, from, bytes.size());
}

// A letter of the text that says what the tables are.
void schemaText(QByteArray &bytes)
{
    const int at = bytes.indexOf("CREATE");
    if (at >= 0)
        bytes[at + below(300)] = anyByte();
}

void schemaWord(QByteArray &bytes)
{
    static const char *const words[][2] = {{"NOCASE", "NOCASX"},
                                           {"setting", "settinh"},
                                           {"TABLE", "TABLX"},
                                           {"PRIMARY", "PRIMARI"},
                                           {"WITHOUT", "WITHIN "}};
    const auto &word = words[below(int(std::size(words)))];
    bytes.replace(word[0], word[1]);
}

// -- its log

void logHeader(QByteArray &bytes)
{
    bytes[below(std::min(logHeaderBytes, bytes.size()))] = anyByte();
}

void frameHeader(QByteArray &bytes)
{
    const int frame = logHeaderBytes + below((bytes.size() - logHeaderBytes) / frameBytes) * frameBytes;
    if (frame + 24 <= bytes.size())
        bytes[frame + below(24)] = anyByte();
}

void frameOfAnother(QByteArray &bytes)
{
    const int frames = (bytes.size() - logHeaderBytes) / frameBytes;
    const QByteArray other = bytes.mid(logHeaderBytes + below(frames) * frameBytes, frameBytes);
    if (frames > 0)
        bytes.replace(logHeaderBytes + below(frames) * frameBytes, frameBytes, other);
}

} // namespace

#define DATABASE "default.rkcfg"
#define LOG "default.rkcfg-wal"

// clang-format off
const Mutation mutations[mutationCount] = {
    {"header byte",       DATABASE, headerByte},
    {"header noise",      DATABASE, headerNoise},
    {"one byte",          DATABASE, oneByte},
    {"one bit",           DATABASE, oneBit},
    {"page of zeros",     DATABASE, pageOfZeros},
    {"page of noise",     DATABASE, pageOfNoise},
    {"page of another",   DATABASE, pageOfAnother},
    {"page head",         DATABASE, pageHead},
    {"cell pointers",     DATABASE, cellPointers},
    {"noise anywhere",    DATABASE, noiseAnywhere},
    {"cut anywhere",      DATABASE, cutAnywhere},
    {"cut at a page",     DATABASE, cutAtAPage},
    {"longer",            DATABASE, longer},
    {"schema text",       DATABASE, schemaText},
    {"schema word",       DATABASE, schemaWord},
    {"log header",        LOG,      logHeader},
    {"frame header",      LOG,      frameHeader},
    {"frame of another",  LOG,      frameOfAnother},
    {"log byte",          LOG,      oneByte},
    {"log noise",         LOG,      noiseAnywhere},
    {"log cut",           LOG,      cutAnywhere},
    {"log longer",        LOG,      longer},
};
// clang-format on
