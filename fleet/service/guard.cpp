// SPDX-License-Identifier: MIT
#include "fleet/service/guard.h"

#include "channel/valuenames.h"
#include "fleet/service/marks.h"
#include "ops/configurations.h"
#include "ops/inputfile.h"
#include "ops/store.h"
#include "rkos.h"

#include <QFile>

namespace fleet {

namespace {

constexpr const char *kEngineEvents[] = {
    "HalvectNMOSConfigChange_0_rx_{8ba14a78-0bb2-b00b-5f55-bfe29a74a8d8}",
    "HalvectNMOSConfigChange_0_tx_{8ba14a78-0bb2-b00b-5f55-bfe29a74a8d8}",
};
constexpr char kRemedy[] = "; a desk keeps copies of servers, which this machine's engine would read."
                           " Set role = server";

bool hasEngineEvent()
{
    for (const char *name : kEngineEvents) {
        const uint64_t event = rkOSOpenEvent(RKOS_GENERIC_READ | RKOS_GENERIC_WRITE, 0, name);
        rkOSCloseEvent(event);
        if (event != RKOS_INVALID_HANDLE)
            return true;
    }
    return false;
}

bool tellsChannels(const QByteArray &configuration)
{
    const auto store = ops::Store::open(configuration);
    const auto values = store ? store->read(StorePath::Config) : ops::Outcome<ops::Snapshot>(store.failure());
    return values && values->find(StorePath::Config, MachineValue::ChannelCount);
}

bool isPrivate(const QByteArray &file)
{
    const auto permissions = QFile::permissions(QFile::decodeName(file));
    return !(permissions & (QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::WriteGroup));
}

} // namespace

ops::Outcome<EtcdOptions> clusterOptions(const Config &config)
{
    EtcdOptions options;
    for (const QByteArray &endpoint : config.endpoints)
        options.endpoints.push_back(endpoint.toStdString());
    const std::pair<const QByteArray &, std::string &> files[] = {
        {config.authorityFile, options.tls.authority},
        {config.certificateFile, options.tls.certificate},
        {config.keyFile, options.tls.key},
    };
    for (const auto &[file, content] : files) {
        const auto text = ops::readInput(file);
        if (!text)
            return text.failure();
        if (!text->contains("-----BEGIN "))
            return ops::wrong(file + ": no certificate or key in PEM form");
        content = text->toStdString();
    }
    if (!isPrivate(config.keyFile))
        return ops::wrong(config.keyFile + ": everybody on this machine can read the key; chmod 600");
    return options;
}

ops::Outcome<ops::Done> mayBeDesk()
{
    const QByteArray inUse = ops::defaultConfiguration();
    if (hasEngineEvent())
        return ops::refused(QByteArray("an engine's NMOS service runs here") + kRemedy);
    const std::optional<KeptAs> kept = keptAs(inUse);
    if (kept && !kept->desk)
        return ops::refused("the configuration \"" + inUse + "\" was shared as the server " + kept->server +
                            kRemedy);
    if (!kept && ops::hasConfiguration(inUse) && tellsChannels(inUse))
        return ops::refused("the configuration \"" + inUse +
                            "\" is an engine's: it has the number of its channels" + kRemedy);
    return ops::Done();
}

} // namespace fleet
