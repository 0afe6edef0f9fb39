// SPDX-License-Identifier: MIT
//
// The keys of corvel-fleet.conf, one row each. Private to fleet/service.
#ifndef CORVEL_FLEET_SERVICE_CONFIGKEYS_H
#define CORVEL_FLEET_SERVICE_CONFIGKEYS_H

#include "fleet/service/config.h"

namespace fleet {

// Takes the value, or says in one line why not; empty: taken.
using KeyReader = QByteArray (*)(const QByteArray &value, Config &config);

struct ConfigKey {
    enum Need { Always, ForDesk, Optional };
    enum Of { Both, ServerOnly, DeskOnly };

    const char *section;
    const char *name;
    Need need;
    Of of;
    KeyReader read;
};

const ConfigKey *configKey(const QByteArray &section, const QByteArray &name);

// "corvel-fleet.conf" without a key that it must have, or with one that its role does not have; empty: fine.
QByteArray complaint(const Config &config, const QByteArrayList &given);

// "; did you mean endpoints?"
QByteArray nearestKey(const QByteArray &section, const QByteArray &name);

} // namespace fleet

#endif
