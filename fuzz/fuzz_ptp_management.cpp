// SPDX-License-Identifier: MIT
// The reader of management answers. The first byte picks the question; the rest is the answer, once as it is
// and once with its head made to fit, so that the readers behind the checks are reached as well.
#include "management.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace rkptp;

namespace {

const DataSet dataSets[] = {DataSet::Default,
                            DataSet::Current,
                            DataSet::Parent,
                            DataSet::TimeProperties,
                            DataSet::Port,
                            DataSet::TimeStatus,
                            DataSet::GrandmasterSettings,
                            DataSet::PortProperties};

void check(const Question &asked, const std::vector<uint8_t> &bytes)
{
    Answer answer;
    const Reading reading = readAnswer(bytes.data(), bytes.size(), asked, answer);
    // Set when and only when it is good, and never naming a port that was not asked.
    if ((reading == Reading::Good) == std::holds_alternative<std::monostate>(answer))
        abort();
    if (const auto *port = std::get_if<PortData>(&answer); port && port->port != asked.target.port)
        abort();
    if (const auto *port = std::get_if<PortPropertiesData>(&answer); port && port->port != asked.target.port)
        abort();
}

// Turns the question itself into the head of its answer.
std::vector<uint8_t> fitHead(const Question &asked, std::vector<uint8_t> bytes)
{
    constexpr size_t portSize = 10;
    const auto head = buildQuestion(asked);
    if (bytes.size() < head.size())
        bytes.resize(head.size());
    std::copy(head.begin(), head.end(), bytes.begin());
    std::vector<uint8_t> asker(bytes.begin() + 20, bytes.begin() + 20 + portSize);
    std::copy_n(bytes.begin() + 34, portSize, bytes.begin() + 20);
    std::copy(asker.begin(), asker.end(), bytes.begin() + 34);
    bytes[2] = static_cast<uint8_t>(bytes.size() >> 8);
    bytes[3] = static_cast<uint8_t>(bytes.size());
    bytes[46] = 2;
    bytes[50] = static_cast<uint8_t>((bytes.size() - 52) >> 8);
    bytes[51] = static_cast<uint8_t>(bytes.size() - 52);
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1 || size > 60000)
        return 0;
    Question asked;
    asked.dataSet = dataSets[data[0] % (sizeof dataSets / sizeof dataSets[0])];
    asked.domain = 5;
    asked.sequence = 0x0102;
    asked.target = {{0x02, 0x1d, 0xc1, 0xff, 0xfe, 0x12, 0x34, 0x57}, static_cast<uint16_t>(data[0] >> 4)};
    asked.asker = {ClockId(), 0xfff0};
    const std::vector<uint8_t> bytes(data + 1, data + size);
    check(asked, bytes);
    check(asked, fitHead(asked, bytes));
    return 0;
}
