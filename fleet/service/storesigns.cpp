// SPDX-License-Identifier: MIT
#include "fleet/service/storesigns.h"

#include "channel/configurations.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <set>

namespace fleet {

namespace {

constexpr char kDefaultFile[] = "default-config";
constexpr uint32_t kEvents = IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_DELETE | IN_DELETE_SELF;

} // namespace

std::optional<QByteArray> configurationOfFile(const QByteArray &file)
{
    if (file == kDefaultFile)
        return QByteArray();
    for (const char *ending : {"", "-wal"}) {
        const QByteArray whole = QByteArray(kConfigurationSuffix) + ending;
        if (file.endsWith(whole) && file.size() > whole.size())
            return file.chopped(whole.size());
    }
    return std::nullopt;
}

StoreSigns::StoreSigns(const QByteArray &folder, Tell tell, int pauseMs)
    : m_tell(std::move(tell)), m_descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (m_descriptor < 0)
        return;
    if (inotify_add_watch(m_descriptor, folder.constData(), kEvents) < 0) {
        close(m_descriptor);
        m_descriptor = -1;
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    m_pause.setSingleShot(true);
    m_pause.setTimerType(Qt::PreciseTimer);
    m_pause.setInterval(pauseMs);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_pause, [this] {
        m_notifier->setEnabled(false);
        m_pause.start();
    });
    QObject::connect(&m_pause, &QTimer::timeout, &m_pause, [this] {
        m_notifier->setEnabled(true);
        read();
    });
}

StoreSigns::~StoreSigns()
{
    m_pause.stop();
    m_notifier.reset();
    if (m_descriptor >= 0)
        close(m_descriptor);
}

// Many events of one burst become one call for each configuration.
void StoreSigns::read()
{
    alignas(inotify_event) char buffer[16384];
    std::set<QByteArray> touched;
    for (ssize_t size = 0; (size = ::read(m_descriptor, buffer, sizeof(buffer))) > 0;) {
        for (const char *at = buffer; at < buffer + size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(at);
            at += sizeof(inotify_event) + event->len;
            if (const auto configuration = configurationOfFile(event->len > 0 ? event->name : ""))
                touched.insert(*configuration);
        }
    }
    for (const QByteArray &configuration : touched)
        m_tell(configuration);
}

} // namespace fleet
