// SPDX-License-Identifier: MIT
#include "management.h"

#include "wire.h"

#include <algorithm>
#include <cstring>

namespace rkptp {

namespace {

using namespace wire;

// Behind the header: management fields 34 to 47, then one TLV.
constexpr size_t atTarget = 34;
constexpr size_t atAction = 46;
constexpr size_t atTlvType = 48;
constexpr size_t atTlvLength = 50;
constexpr size_t atTlvId = 52;
constexpr size_t atData = 54;

constexpr uint8_t managementType = 0x0d;
constexpr uint8_t managementControl = 4;
constexpr uint8_t actionGet = 0;
constexpr uint8_t actionResponse = 2;
constexpr uint16_t tlvManagement = 1;
constexpr uint16_t tlvErrorStatus = 2;

uint64_t get64(const uint8_t *at)
{
    uint64_t value = 0;
    for (int i = 0; i < 8; ++i)
        value = value << 8 | at[i];
    return value;
}

// Two's complement, as the wire has it.
int64_t getSigned64(const uint8_t *at)
{
    const uint64_t raw = get64(at);
    int64_t value;
    memcpy(&value, &raw, sizeof value);
    return value;
}

int16_t getSigned16(const uint8_t *at)
{
    const uint16_t raw = get16(at);
    int16_t value;
    memcpy(&value, &raw, sizeof value);
    return value;
}

void put16(uint8_t *at, uint16_t value)
{
    at[0] = static_cast<uint8_t>(value >> 8);
    at[1] = static_cast<uint8_t>(value & 0xff);
}

void putPort(uint8_t *at, const PortId &id)
{
    std::copy(id.clock.begin(), id.clock.end(), at);
    put16(at + 8, id.port);
}

Answer readDefault(const uint8_t *data, size_t)
{
    return DefaultData{get16(data + 2), getClock(data + 10), data[18]};
}

Answer readCurrent(const uint8_t *data, size_t)
{
    return CurrentData{get16(data), getSigned64(data + 10)};
}

Answer readParent(const uint8_t *data, size_t)
{
    return ParentData{getPort(data), getClock(data + 24)};
}

Answer readTimeProperties(const uint8_t *data, size_t)
{
    constexpr unsigned timescaleFlag = 1u << 3;
    return TimePropertiesData{getSigned16(data), (data[2] & timescaleFlag) != 0};
}

bool isPortState(uint8_t value)
{
    return value >= static_cast<uint8_t>(PortState::Initializing) &&
           value <= static_cast<uint8_t>(PortState::Slave);
}

Answer readPort(const uint8_t *data, size_t)
{
    if (!isPortState(data[10]))
        return {};
    return PortData{get16(data + 8), static_cast<PortState>(data[10]), static_cast<uint8_t>(data[25] & 0x0f)};
}

Answer readTimeStatus(const uint8_t *data, size_t)
{
    const bool present = (get16(data + 38) | get16(data + 40)) != 0;
    return TimeStatusData{getSigned64(data), getSigned64(data + 8), present, getClock(data + 42)};
}

Answer readGrandmasterSettings(const uint8_t *data, size_t)
{
    return GrandmasterSettingsData{getSigned16(data + 4)};
}

// The only data set with a text in it: its length byte is checked against what is there.
Answer readPortProperties(const uint8_t *data, size_t size)
{
    constexpr size_t atText = 13;
    const size_t length = data[12];
    if (length > size - atText)
        return {};
    return PortPropertiesData{get16(data + 8), std::string(data + atText, data + atText + length)};
}

struct Layout {
    DataSet dataSet;
    uint16_t minSize; // of the data behind the identifier
    uint16_t maxSize;
    bool perPort; // answered by the port asked, not by the clock
    Answer (*read)(const uint8_t *data, size_t size);
};

// clang-format off
const Layout layouts[] = {
    // data set                     min  max  port   reader
    {DataSet::Default,              20,  20,  false, readDefault},
    {DataSet::Current,              18,  18,  false, readCurrent},
    {DataSet::Parent,               32,  32,  false, readParent},
    {DataSet::TimeProperties,        4,   4,  false, readTimeProperties},
    {DataSet::Port,                 26,  26,  true,  readPort},
    {DataSet::TimeStatus,           50,  50,  false, readTimeStatus},
    {DataSet::GrandmasterSettings,   8,   8,  false, readGrandmasterSettings},
    {DataSet::PortProperties,       13,  270, true,  readPortProperties},
};
// clang-format on

const Layout *layoutOf(DataSet dataSet)
{
    const auto row = std::find_if(std::begin(layouts), std::end(layouts),
                                  [dataSet](const Layout &layout) { return layout.dataSet == dataSet; });
    return row == std::end(layouts) ? nullptr : row;
}

bool headerFits(const uint8_t *bytes, size_t size, const Question &asked)
{
    return size >= atData && size <= largestAnswer && isMessage(bytes, managementType) &&
           get16(bytes + atLength) == size && bytes[atDomain] == asked.domain &&
           get16(bytes + atSequence) == asked.sequence;
}

bool partiesFit(const uint8_t *bytes, const Question &asked, const Layout &layout)
{
    const PortId source = getPort(bytes + atSource);
    const bool fromTarget = source.clock == asked.target.clock || asked.target.clock == everyClock;
    return fromTarget && (!layout.perPort || source.port == asked.target.port) &&
           getPort(bytes + atTarget) == asked.asker && (bytes[atAction] & 0x0f) == actionResponse;
}

// A port's data names the port itself once more; it must be the one that was asked.
bool namesPort(const Answer &answer, const Question &asked)
{
    if (const auto *port = std::get_if<PortData>(&answer))
        return port->port == asked.target.port;
    if (const auto *port = std::get_if<PortPropertiesData>(&answer))
        return port->port == asked.target.port;
    return true;
}

} // namespace

std::array<uint8_t, questionSize> buildQuestion(const Question &question)
{
    std::array<uint8_t, questionSize> bytes{};
    bytes[atType] = managementType;
    bytes[atVersion] = ptpVersion;
    put16(&bytes[atLength], questionSize);
    bytes[atDomain] = question.domain;
    putPort(&bytes[atSource], question.asker);
    put16(&bytes[atSequence], question.sequence);
    bytes[atControl] = managementControl;
    bytes[atInterval] = 0x7f;
    putPort(&bytes[atTarget], question.target);
    // Bytes 44 and 45, the boundary hops, stay 0: a question never leaves this machine.
    bytes[atAction] = actionGet;
    put16(&bytes[atTlvType], tlvManagement);
    put16(&bytes[atTlvLength], 2);
    put16(&bytes[atTlvId], static_cast<uint16_t>(question.dataSet));
    return bytes;
}

Reading readAnswer(const uint8_t *bytes, size_t size, const Question &asked, Answer &answer)
{
    const Layout *layout = layoutOf(asked.dataSet);
    if (!layout || !headerFits(bytes, size, asked) || !partiesFit(bytes, asked, *layout))
        return Reading::Foreign;
    if (get16(bytes + atTlvType) == tlvErrorStatus)
        return Reading::Refused;
    const size_t tlvLength = get16(bytes + atTlvLength);
    if (get16(bytes + atTlvType) != tlvManagement || tlvLength < 2 || tlvLength != size - atTlvId ||
        get16(bytes + atTlvId) != static_cast<uint16_t>(asked.dataSet))
        return Reading::Foreign;
    const size_t dataSize = tlvLength - 2;
    if (dataSize < layout->minSize || dataSize > layout->maxSize)
        return Reading::Foreign;
    const Answer read = layout->read(bytes + atData, dataSize);
    if (std::holds_alternative<std::monostate>(read) || !namesPort(read, asked))
        return Reading::Foreign;
    answer = read;
    return Reading::Good;
}

} // namespace rkptp
