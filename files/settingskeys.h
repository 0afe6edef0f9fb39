// SPDX-License-Identifier: MIT
//
// The keys that a settings file may have, and what each of them stores. Pure; any thread.
#ifndef CORVEL_SETTINGSKEYS_H
#define CORVEL_SETTINGSKEYS_H

#include <QByteArray>

#include <string>
#include <string_view>

// What a key stands for.
struct SettingsKey {
    enum class Kind {
        None,   // the key is not accepted
        Text,   // a channel's text
        Number, // a channel's number
        Global  // a number of the whole machine
    };
    QByteArray name; // to store the value under
    Kind kind = Kind::None;
};

// The letter case of a key does not matter. lowered is scratch; it holds the key in lower case when it is not
// accepted.
SettingsKey meaningOf(std::string_view key, std::string &lowered);

#endif
