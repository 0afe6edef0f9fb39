// SPDX-License-Identifier: MIT
#include "fleet/service/service.h"

#include "fleet/service/crew.h"
#include "fleet/service/guard.h"
#include "fleet/service/metrics.h"
#include "fleet/service/say.h"
#include "fleet/service/storesigns.h"
#include "fleet/storenotes.h"
#include "rkos.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QLockFile>
#include <QMutex>

#include <csignal>
#include <sched.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace fleet {

namespace {

// SIGTERM and SIGINT as something to read. Before any other thread is made, so that none of them gets the
// signals.
int terminationDescriptor()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

QByteArray configFolder()
{
    char folder[RKOS_PATH_SIZE] = "";
    rkOSGetConfigDir(folder);
    return QByteArray(folder).chopped(1); // without its "/"
}

int failed(const ops::Failure &failure)
{
    say(failure.text);
    return failure.kind == ops::Failure::Input ? kBadConfiguration : kRefused;
}

// The last status, for who asks on another thread.
class Shown {
public:
    void put(const FleetStatus &status)
    {
        const QMutexLocker locker(&m_mutex);
        m_status = status;
    }
    FleetStatus get() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_status;
    }

private:
    mutable QMutex m_mutex;
    FleetStatus m_status;
};

// Whoever edits here is not interrupted by what the service makes of it. Threads take it over.
void giveWay()
{
    const sched_param none{};
    sched_setscheduler(0, SCHED_BATCH, &none);
}

// Each configuration that is kept takes some: a desk may follow thousands of servers.
void allowManyFiles()
{
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur >= files.rlim_max)
        return;
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
}

ops::Outcome<ops::Done> mayRun(const Config &config)
{
    if (!StoreNotes::available())
        return ops::refused("this configuration library keeps no notes, which the fleet needs");
    return config.isDesk() ? mayBeDesk() : ops::Outcome<ops::Done>(ops::Done());
}

int serve(const Config &config, const EtcdOptions &options, const QByteArray &folder, int termination)
{
    StatusFile file(folder);
    Shown shown;
    Crew crew(config, options, [&](const FleetStatus &status) {
        file.write(status);
        shown.put(status);
    });
    Metrics metrics([&] { return metricsText(shown.get(), QDateTime::currentMSecsSinceEpoch()); });
    if (config.metricsPort > 0 && !metrics.listen(config.metricsPort))
        say("no figures: port " + QByteArray::number(config.metricsPort) + " is taken");
    const StoreSigns signs(folder, [&](const QByteArray &configuration) { crew.touched(configuration); });
    QSocketNotifier stop(termination, QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, &stop, [] { QCoreApplication::quit(); });
    crew.start();
    say(QByteArray("started as the ") + (config.isDesk() ? "desk " : "server ") + config.name);
    const int code = QCoreApplication::exec();
    say("stopped");
    return code;
}

} // namespace

int runService(const QByteArray &configFile)
{
    const int termination = terminationDescriptor();
    allowManyFiles();
    giveWay();
    const auto config = readConfig(configFile);
    if (!config)
        return failed(config.failure());
    const auto options = clusterOptions(*config);
    if (!options)
        return failed(options.failure());
    const auto allowed = mayRun(*config);
    if (!allowed)
        return failed(allowed.failure());
    const QByteArray folder = configFolder();
    QLockFile lock(QFile::decodeName(folder + "/fleet-lock"));
    lock.setStaleLockTime(0); // only a dead process leaves one behind
    if (!lock.tryLock())
        return failed(ops::refused("another corvel-fleet keeps the configurations in " + folder));
    const int code = serve(*config, *options, folder, termination);
    StatusFile(folder).remove();
    close(termination);
    return code;
}

} // namespace fleet
