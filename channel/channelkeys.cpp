// SPDX-License-Identifier: MIT
#include "channel/channelkeys.h"

#include "channel/keytable.h"

#include <array>

namespace {

// clang-format off
constexpr FlagBit kFlagBits[] = {
    {Field::SourcePort,         1},
    {Field::DestinationPort,    2},
    {Field::SourceAddress,      4},
    {Field::DestinationAddress, 8},
    {Field::Interface,          16},
};
// clang-format on

struct NameBook {
    NameBook();
    std::array<std::array<QByteArray, kFlowCount>, std::size(KeyTable::kKeys)> names;
};

NameBook::NameBook()
{
    auto row = names.begin();
    for (const ChannelKey &key : KeyTable::kKeys) {
        for (int flow = 0; flow < kFlowCount; ++flow)
            (*row)[static_cast<std::size_t>(flow)] = valueName(key, QByteArray::number(flow));
        ++row;
    }
}

} // namespace

TableView<ChannelKey> channelKeys()
{
    return {KeyTable::kKeys, std::size(KeyTable::kKeys)};
}

const ChannelKey &channelKey(Element element, Side side, Field field)
{
    const int row = KeyTable::rowOf(element, side, field);
    if (row == KeyTable::kNoRow)
        qFatal("channelKey: element %d has no field %d", static_cast<int>(element), static_cast<int>(field));
    return KeyTable::kKeys[row];
}

const ChannelKey *findChannelKey(Element element, Side side, Field field)
{
    const int row = KeyTable::rowOf(element, side, field);
    return row == KeyTable::kNoRow ? nullptr : &KeyTable::kKeys[row];
}

QByteArray valueName(const ChannelKey &key, const QByteArray &flowSuffix)
{
    const QByteArray name = QByteArray::fromRawData(key.name, static_cast<int>(qstrlen(key.name)));
    return key.perFlow ? name + flowSuffix : name;
}

QByteArray flowValueName(const ChannelKey &key, int flow)
{
    static const NameBook book;
    if (flow < 0 || flow >= kFlowCount)
        return valueName(key, QByteArray::number(flow));
    const int row = KeyTable::rowOf(key.element, key.side, key.field);
    return book.names[static_cast<std::size_t>(row)][static_cast<std::size_t>(flow)];
}

TableView<FlagBit> flagBits()
{
    return {kFlagBits, std::size(kFlagBits)};
}

quint32 flagBit(Field field)
{
    for (const FlagBit &row : kFlagBits) {
        if (row.field == field)
            return row.bit;
    }
    return 0;
}

quint32 elementCode(Element element, Side side)
{
    const quint32 receive = 0x1000u << static_cast<int>(element); // 0x1000, 0x2000, 0x4000
    return side == Side::Receive ? receive : receive << 4;        // 0x10000, 0x20000, 0x40000
}
