// SPDX-License-Identifier: MIT
#include "child.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sys/socket.h>
#include <sys/un.h>

namespace rkptp {

namespace {

constexpr int64_t kAnswerTimeout = 200 * kNanosPerMilli;
constexpr int64_t kStartRetry = 20 * kNanosPerMilli;     // until ptp4l has opened its socket
constexpr int64_t kEagerInterval = 100 * kNanosPerMilli; // between rounds until locked
constexpr int64_t kCalmInterval = 250 * kNanosPerMilli;  // and from then on
constexpr int64_t kSilenceLimit = 10 * kNanosPerSecond;
constexpr int64_t kEndGrace = 2 * kNanosPerSecond;
constexpr int64_t kSearchTimeout = 20 * kNanosPerMilli; // for an answer in one domain
constexpr int64_t kMeetingLimit = 5 * kNanosPerSecond;  // for the first words of the system's ptp4l
constexpr int64_t kNearby = 10 * kNanosPerSecond; // two readings of the same clock are never farther apart
constexpr uint16_t kMaxSystemPorts = 64;
constexpr unsigned kSlowRounds = 4; // the slow questions are asked in every fourth round

template<class Data>
bool keep(const Answer &answer, Data &into)
{
    const Data *data = std::get_if<Data>(&answer);
    if (data)
        into = *data;
    return data;
}

// As whom we ask. Not by the identity of the clock on purpose: ptp4l drops what seems to come from itself.
const PortId kAsker = {ClockId(), 0xfff0};

struct PlanRow {
    DataSet dataSet;
    bool perPort;
    bool slow;
};

// The time status comes first on purpose: what its offset depends on must be read after it.
// clang-format off
const PlanRow kPlan[] = {
    // data set                     per port  slow
    {DataSet::TimeStatus,           false,    false},
    {DataSet::GrandmasterSettings,  false,    false},
    {DataSet::TimeProperties,       false,    false},
    {DataSet::Current,              false,    false},
    {DataSet::Parent,               false,    false},
    {DataSet::Port,                 true,     false},
    {DataSet::Default,              false,    true},
    {DataSet::PortProperties,       true,     true},
};
// clang-format on

bool makeAddress(const std::string &path, sockaddr_un &address)
{
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return false;
    path.copy(address.sun_path, path.size());
    return true;
}

} // namespace

Child::Child(const ChildKey &key, std::vector<Interface> interfaces, const CarriedTime &carried)
    : m_key(key), m_interfaces(std::move(interfaces)), m_gone(m_interfaces.size()),
      m_identity(randomIdentity()), m_domain(static_cast<uint8_t>(key.domain)), m_timebase(carried)
{
    m_seen.ports.resize(m_interfaces.size());
    m_seen.portNames.resize(m_interfaces.size());
}

Child::~Child()
{
    if (!m_ownPath.empty())
        unlink(m_ownPath.c_str());
    // A killed ptp4l leaves its socket behind. That of the system is not ours to remove.
    if (!m_peerPath.empty() && !m_visiting)
        unlink(m_peerPath.c_str());
}

int Child::start(const std::string &launcher, const RunFolder &folder, unsigned number, int64_t now)
{
    m_ownPath = folder.pathOf(std::to_string(number) + ".ask");
    m_peerPath = folder.pathOf(std::to_string(number) + ".ptp4l");
    if (!openSocket())
        return errno;
    ProcessRequest request;
    request.launcher = launcher;
    request.domain = m_key.domain;
    request.identity = formatForPtp4l(m_identity);
    request.socketPath = m_peerPath;
    for (const Interface &interface : m_interfaces)
        request.interfaces.push_back(interface.name);
    m_startedAt = m_lastAnswer = now;
    m_due = now + kStartRetry;
    planRound();
    return m_process.start(request);
}

bool Child::reach(const std::string &path)
{
    sockaddr_un address;
    m_peerPath = path;
    m_connected = makeAddress(path, address) &&
                  connect(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    return m_connected;
}

bool Child::visit(const SystemClient &client, const RunFolder &folder, unsigned number, int64_t now)
{
    m_visiting = true;
    m_ownPath = folder.pathOf(std::to_string(number) + ".ask");
    if (!openSocket() || std::none_of(client.sockets.begin(), client.sockets.end(),
                                      [this](const std::string &path) { return reach(path); }))
        return false;
    // It answers in its own domain only: the one it was started with, the one we look for, then any.
    if (!client.domain.empty())
        m_search.push_back(static_cast<uint8_t>(strtoul(client.domain.c_str(), nullptr, 10)));
    m_search.push_back(static_cast<uint8_t>(m_key.domain));
    for (unsigned domain = 0; domain <= RKPTP_HIGHEST_DOMAIN; ++domain)
        m_search.push_back(static_cast<uint8_t>(domain));
    m_startedAt = m_lastAnswer = m_due = now;
    planRound();
    return true;
}

// Who it is and where it runs.
void Child::planSearch()
{
    Question question;
    question.domain = m_search[m_tried++ % m_search.size()];
    question.target = {kEveryClock, kEveryPort};
    question.asker = kAsker;
    m_round.push_back(question);
}

void Child::meet(const DefaultData &clock)
{
    m_identity = clock.clock;
    m_domain = clock.domain;
    m_search.clear();
    m_seen.ports.assign(std::clamp<uint16_t>(clock.ports, 1, kMaxSystemPorts), PortData());
    m_seen.portNames.assign(m_seen.ports.size(), std::string());
    m_due = 0;
}

bool Child::servesUs() const
{
    return std::any_of(m_seen.portNames.begin(), m_seen.portNames.end(), [this](const std::string &name) {
        return std::any_of(m_interfaces.begin(), m_interfaces.end(),
                           [&name](const Interface &one) { return one.name == name; });
    });
}

bool Child::mistaken(int64_t now) const
{
    return m_visiting && (m_rounds == 0 ? now - m_startedAt > kMeetingLimit : !servesUs());
}

bool Child::openSocket()
{
    sockaddr_un address;
    if (!makeAddress(m_ownPath, address)) {
        errno = ENAMETOOLONG;
        return false;
    }
    m_socket = Descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    return m_socket.valid() &&
           bind(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

void Child::planRound()
{
    m_round.clear();
    m_next = 0;
    m_inFlight = false;
    if (!m_search.empty())
        return planSearch();
    for (const PlanRow &row : kPlan) {
        if (row.slow && m_rounds % kSlowRounds != 0)
            continue;
        const auto ports = static_cast<uint16_t>(row.perPort ? m_seen.ports.size() : 0);
        for (uint16_t port = row.perPort ? 1 : 0; port <= ports; ++port) {
            Question question;
            question.dataSet = row.dataSet;
            question.domain = m_domain;
            question.target = {m_identity, port};
            question.asker = kAsker;
            m_round.push_back(question);
        }
    }
}

// Sends the next question. False when ptp4l is not there yet, or not any more.
bool Child::ask(int64_t now)
{
    sockaddr_un address;
    makeAddress(m_peerPath, address);
    // Connected, the socket takes datagrams from this ptp4l alone.
    if (!m_connected)
        m_connected =
            connect(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    Question &question = m_round[m_next];
    question.sequence = ++m_sequence;
    const auto bytes = buildQuestion(question);
    if (!m_connected || send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0)
        return false;
    m_inFlight = true;
    m_due = now + (m_search.empty() ? kAnswerTimeout : kSearchTimeout);
    return true;
}

void Child::store(const Answer &answer)
{
    if (keep(answer, m_seen.clock) || keep(answer, m_seen.current) || keep(answer, m_seen.parent) ||
        keep(answer, m_seen.timeProperties) || keep(answer, m_seen.timeStatus) ||
        keep(answer, m_seen.settings))
        return;
    if (const auto *port = std::get_if<PortData>(&answer))
        m_seen.ports[port->port - 1u] = *port; // the reader has checked that it is the port asked
    else if (const auto *named = std::get_if<PortPropertiesData>(&answer))
        m_seen.portNames[named->port - 1u] = named->interface;
}

// Reads until the answer in flight has come or nothing is left. True when it has come.
bool Child::takeAnswers()
{
    uint8_t bytes[kLargestAnswer + 1];
    while (m_inFlight) {
        const ssize_t size = recv(m_socket.get(), bytes, sizeof bytes, 0);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return false;
        Answer answer;
        const Reading reading = readAnswer(bytes, static_cast<size_t>(size), m_round[m_next], answer);
        if (reading == Reading::Foreign)
            continue;
        store(answer);
        m_inFlight = false;
        ++m_next;
        return true;
    }
    return false;
}

void Child::giveUpRound(int64_t now)
{
    m_due = now + (m_rounds == 0 ? kStartRetry : kEagerInterval);
    if (!m_search.empty())
        m_due = now + kNanosPerMilli;
    planRound();
}

void Child::checkInterfaces(bool locked)
{
    const std::vector<Interface> present = findInterfaces(m_key.address);
    for (size_t i = 0; i < m_interfaces.size(); ++i)
        m_gone[i] = std::find(present.begin(), present.end(), m_interfaces[i]) == present.end();
    // Listening on all interfaces, one that comes or goes is no reason to give up a master.
    if (!locked && !present.empty() && present != m_interfaces)
        m_outdated = true;
}

// The system's client may run on the clock of the network interface, which keeps PTP's own scale. Then the
// system clock is taken for it with the difference of the scales, as phc2sys keeps the two together.
SyncSample Child::sample(ClockReading &clocks) const
{
    SyncSample sample;
    sample.masterOffset = m_seen.timeStatus.masterOffset;
    sample.ingressTime = m_seen.timeStatus.ingressTime;
    sample.basis.appliedUtcOffset = m_seen.settings.appliedUtcOffset;
    sample.basis.ptpTimescale = m_seen.timeProperties.ptpTimescale;
    // Until the first delay was measured ptp4l reports an offset of 0 that means nothing.
    sample.basis.delayKnown = m_seen.current.meanPathDelay != 0;
    sample.basis.grandmaster = m_seen.timeStatus.grandmaster;
    const int64_t scales = sample.basis.appliedUtcOffset * kNanosPerSecond;
    if (m_visiting && std::llabs(sample.ingressTime - clocks.realtime - scales) < kNearby) {
        clocks.realtime += scales;
        sample.basis.ptpTimescale = false;
    }
    return sample;
}

bool Child::finishRound(int64_t now)
{
    if (!m_search.empty()) {
        meet(m_seen.clock);
        planRound();
        return false;
    }
    ClockReading clocks = readClocks();
    const SyncSample seen = sample(clocks);
    m_timebase.feed(seen, clocks);
    const bool locked = m_timebase.carried().freshAt(now);
    if (m_rounds % kSlowRounds == 0)
        checkInterfaces(locked);
    ++m_rounds;
    m_due = now + (locked ? kCalmInterval : kEagerInterval);
    planRound();
    return true;
}

bool Child::converse(int64_t now)
{
    while (takeAnswers()) {
        m_lastAnswer = now;
        if (m_next == m_round.size())
            return finishRound(now);
        if (!ask(now))
            giveUpRound(now);
    }
    if (now < m_due || ending())
        return false;
    if (m_inFlight || !ask(now))
        giveUpRound(now);
    return false;
}

bool Child::silent(int64_t now) const
{
    return !ending() && now - m_lastAnswer > kSilenceLimit;
}

bool Child::usable(size_t port) const
{
    const PortState state = m_seen.ports[port].state;
    return (m_visiting || !m_gone[port]) && state != PortState::Faulty && state != PortState::Disabled;
}

// The port that follows a master. Free running it stays "uncalibrated" for ever, so that counts like "slave".
const PortData *Child::followed() const
{
    for (size_t i = 0; i < m_seen.ports.size(); ++i) {
        const PortState state = m_seen.ports[i].state;
        if (usable(i) && (state == PortState::Uncalibrated || state == PortState::Slave))
            return &m_seen.ports[i];
    }
    return nullptr;
}

ClientState Child::state() const
{
    if (m_rounds == 0)
        return ClientState::Starting;
    bool anyUsable = false;
    for (size_t i = 0; i < m_seen.ports.size(); ++i)
        anyUsable = anyUsable || usable(i);
    if (!anyUsable)
        return ClientState::Faulty;
    return followed() && m_seen.timeStatus.grandmasterPresent ? ClientState::Following
                                                              : ClientState::Listening;
}

std::string Child::addressOf(const PortData *port) const
{
    if (m_interfaces.size() == 1 && !m_visiting)
        return m_interfaces[0].address;
    if (!port)
        return {};
    const std::string &name = m_seen.portNames[port->port - 1u];
    const auto found = std::find_if(m_interfaces.begin(), m_interfaces.end(),
                                    [&name](const Interface &one) { return one.name == name; });
    return found == m_interfaces.end() ? std::string() : found->address;
}

Snapshot Child::view() const
{
    Snapshot snapshot;
    snapshot.state = state();
    snapshot.carried = m_timebase.carried();
    snapshot.ofSystem = m_visiting;
    snapshot.setInterfaces(m_interfaces);
    if (snapshot.state == ClientState::Starting)
        return snapshot;
    snapshot.otherDomain = m_seen.clock.domain != m_key.domain;
    snapshot.isMaster = std::any_of(m_seen.ports.begin(), m_seen.ports.end(),
                                    [](const PortData &port) { return port.state == PortState::Master; });
    snapshot.setText(Text::Version, "PTPv" + std::to_string(unsigned{m_seen.ports[0].version}));
    snapshot.setText(Text::Domain, std::to_string(unsigned{m_seen.clock.domain}));
    snapshot.setText(Text::Address, addressOf(followed()));
    if (snapshot.state != ClientState::Following)
        return snapshot;
    snapshot.grandmaster = m_seen.timeStatus.grandmaster;
    snapshot.setText(Text::Grandmaster, formatIdentity(snapshot.grandmaster));
    snapshot.setText(Text::SourcePort, formatPortId(m_seen.parent.parent));
    return snapshot;
}

void Child::askToEnd(int64_t now)
{
    m_killAt = now + kEndGrace;
    m_process.signal(SIGTERM);
}

void Child::forceEnd()
{
    m_killAt = INT64_MAX;
    m_process.signal(SIGKILL);
}

} // namespace rkptp
