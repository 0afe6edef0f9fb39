// SPDX-License-Identifier: MIT
#include "management.h"

#include "wire.h"

#include <algorithm>
#include <cstring>

namespace rkptp {

namespace {

using namespace wire;

// Behind the header: management fields 34 to 47, then one TLV.
constexpr size_t kAtTarget = 34;
constexpr size_t kAtAction = 46;
constexpr size_t kAtTlvType = 48;
constexpr size_t kAtTlvLength = 50;
constexpr size_t kAtTlvId = 52;
constexpr size_t kAtData = 54;

constexpr uint8_t kManagementType = 0x0d;
constexpr uint8_t kManagementControl = 4;
constexpr uint8_t kActionGet = 0;
constexpr uint8_t kActionResponse = 2;
constexpr uint16_t kTlvManagement = 1;
constexpr uint16_t kTlvErrorStatus = 2;

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
    constexpr unsigned kTimescaleFlag = 1u << 3;
    return TimePropertiesData{getSigned16(data), (data[2] & kTimescaleFlag) != 0};
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
    constexpr size_t kAtText = 13;
    const size_t length = data[12];
    if (length > size - kAtText)
        return {};
    return PortPropertiesData{get16(data + 8), std::string(data + kAtText, data + kAtText + length)};
}

struct Layout {
    DataSet dataSet;
    uint16_t minSize; // of the data behind the identifier
    uint16_t maxSize;
    bool perPort; // answered by the port asked, not by the clock
    Answer (*read)(const uint8_t *data, size_t size);
};

// clang-format off
const Layout kLayouts[] = {
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
    const auto row = std::find_if(std::begin(kLayouts), std::end(kLayouts),
                                  [dataSet](const Layout &layout) { return layout.dataSet == dataSet; });
    return row == std::end(kLayouts) ? nullptr : row;
}

bool headerFits(const uint8_t *bytes, size_t size, const Question &asked)
{
    return size >= kAtData && size <= kLargestAnswer && isMessage(bytes, kManagementType) &&
           get16(bytes + kAtLength) == size && bytes[kAtDomain] == asked.domain &&
           get16(bytes + kAtSequence) == asked.sequence;
}

bool partiesFit(const uint8_t *bytes, const Question &asked, const Layout &layout)
{
    const PortId source = getPort(bytes + kAtSource);
    const bool fromTarget = source.clock == asked.target.clock || asked.target.clock == kEveryClock;
    return fromTarget && (!layout.perPort || source.port == asked.target.port) &&
           getPort(bytes + kAtTarget) == asked.asker && (bytes[kAtAction] & 0x0f) == kActionResponse;
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

std::array<uint8_t, kQuestionSize> buildQuestion(const Question &question)
{
    std::array<uint8_t, kQuestionSize> bytes{};
    bytes[kAtType] = kManagementType;
    bytes[kAtVersion] = kPtpVersion;
    put16(&bytes[kAtLength], kQuestionSize);
    bytes[kAtDomain] = question.domain;
    putPort(&bytes[kAtSource], question.asker);
    put16(&bytes[kAtSequence], question.sequence);
    bytes[kAtControl] = kManagementControl;
    bytes[kAtInterval] = 0x7f;
    putPort(&bytes[kAtTarget], question.target);
    // Bytes 44 and 45, the boundary hops, stay 0: a question never leaves this machine.
    bytes[kAtAction] = kActionGet;
    put16(&bytes[kAtTlvType], kTlvManagement);
    put16(&bytes[kAtTlvLength], 2);
    put16(&bytes[kAtTlvId], static_cast<uint16_t>(question.dataSet));
    return bytes;
}

Reading readAnswer(const uint8_t *bytes, size_t size, const Question &asked, Answer &answer)
{
    const Layout *layout = layoutOf(asked.dataSet);
    if (!layout || !headerFits(bytes, size, asked) || !partiesFit(bytes, asked, *layout))
        return Reading::Foreign;
    if (get16(bytes + kAtTlvType) == kTlvErrorStatus)
        return Reading::Refused;
    const size_t tlvLength = get16(bytes + kAtTlvLength);
    if (get16(bytes + kAtTlvType) != kTlvManagement || tlvLength < 2 || tlvLength != size - kAtTlvId ||
        get16(bytes + kAtTlvId) != static_cast<uint16_t>(asked.dataSet))
        return Reading::Foreign;
    const size_t dataSize = tlvLength - 2;
    if (dataSize < layout->minSize || dataSize > layout->maxSize)
        return Reading::Foreign;
    const Answer read = layout->read(bytes + kAtData, dataSize);
    if (std::holds_alternative<std::monostate>(read) || !namesPort(read, asked))
        return Reading::Foreign;
    answer = read;
    return Reading::Good;
}

} // namespace rkptp
