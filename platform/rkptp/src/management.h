// SPDX-License-Identifier: MIT
#ifndef RKPTP_MANAGEMENT_H
#define RKPTP_MANAGEMENT_H

// PTP management messages (IEEE 1588-2008 clause 15 and the extensions of linuxptp) as bytes: building a
// question, reading its answer. No socket and no state; every byte of an answer is checked before it is used.

#include "identity.h"

#include <cstddef>
#include <variant>

namespace rkptp {

// The data sets asked for, by their management identifiers.
enum class DataSet : uint16_t {
    Default = 0x2000,
    Current = 0x2001,
    Parent = 0x2002,
    TimeProperties = 0x2003,
    Port = 0x2004,
    TimeStatus = 0xc000,
    GrandmasterSettings = 0xc001,
    PortProperties = 0xc004,
};

// Whom a question goes to that every clock answers.
constexpr ClockId kEveryClock = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
constexpr uint16_t kEveryPort = 0xffff;

// What is asked of whom. The answer must come from `target` (any clock when that is everyClock), go to
// `asker` and repeat domain and sequence.
struct Question {
    DataSet dataSet = DataSet::Default;
    uint8_t domain = 0;
    uint16_t sequence = 0;
    PortId target; // port 0: the clock as a whole
    PortId asker;
};

struct DefaultData {
    uint16_t ports = 0;
    ClockId clock{};
    uint8_t domain = 0;
};

struct CurrentData {
    uint16_t stepsRemoved = 0;
    int64_t meanPathDelay = 0; // nanoseconds times 65536; 0 until the first delay was measured
};

struct ParentData {
    PortId parent;
    ClockId grandmaster{};
};

struct TimePropertiesData {
    int16_t announcedUtcOffset = 0; // seconds, as the master announces it; not the one ptp4l applies
    bool ptpTimescale = false;
};

enum class PortState : uint8_t {
    Initializing = 1,
    Faulty,
    Disabled,
    Listening,
    PreMaster,
    Master,
    Passive,
    Uncalibrated,
    Slave,
};

struct PortData {
    uint16_t port = 0;
    PortState state = PortState::Initializing;
    uint8_t version = 0;
};

struct TimeStatusData {
    int64_t masterOffset = 0; // nanoseconds, own clock minus master, applied UTC offset taken in
    int64_t ingressTime = 0;  // own clock at the last sync, nanoseconds; 0 when there was none
    bool grandmasterPresent = false;
    ClockId grandmaster{};
};

struct GrandmasterSettingsData {
    int16_t appliedUtcOffset = 0; // seconds
};

struct PortPropertiesData {
    uint16_t port = 0;
    std::string interface;
};

using Answer = std::variant<std::monostate, DefaultData, CurrentData, ParentData, TimePropertiesData,
                            PortData, TimeStatusData, GrandmasterSettingsData, PortPropertiesData>;

enum class Reading {
    Foreign, // broken, or not the answer to this question: wait on
    Refused, // the answer is an error report
    Good,
};

constexpr size_t kQuestionSize = 54;
constexpr size_t kLargestAnswer = 1500;

std::array<uint8_t, kQuestionSize> buildQuestion(const Question &question);

/* Reads `size` bytes as the answer to `asked`. `answer` is set only when the result is Good. */
Reading readAnswer(const uint8_t *bytes, size_t size, const Question &asked, Answer &answer);

} // namespace rkptp

#endif // RKPTP_MANAGEMENT_H
