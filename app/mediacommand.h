// SPDX-License-Identifier: MIT
//
// Media commands: how an embedded dialog talks to the recording engine of its host. The dialog fills a
// MEDIACMD and hands it to ipSetMode; the host's hook sends it on and, for a question, fills the answer
// into the same record. Without a hook nothing is sent and every question stays unanswered.
#ifndef CORVEL_MEDIACOMMAND_H
#define CORVEL_MEDIACOMMAND_H

#include <QtGlobal>

#include <functional>

// What a command asks for.
namespace MediaCode {
constexpr quint32 ReloadMedia = 75100;      // read the channel's media again
constexpr quint32 GetType = 75110;          // answer: value = channel type, 0 when there is none
constexpr quint32 GetSettings = 75111;      // answer: the settings of element (and flow)
constexpr quint32 ReceiveFinal = 75120;     // receive settings, the last of this dialog
constexpr quint32 ReceiveSettings = 75121;  // receive settings of element (and flow)
constexpr quint32 TransmitSettings = 75122; // send settings of element (and flow)
constexpr quint32 SetType = 75123;          // value = channel type; audioLayout when it changed
constexpr quint32 SetClock = 75124;         // value = clock source, domain
constexpr quint32 SetField = 75125;         // one field of element (and flow): field, value or text
} // namespace MediaCode

// One record serves every code; members a code does not name are zero. Texts are zero-terminated.
struct MEDIACMD {
    quint32 code = 0;        // MediaCode
    qint32 channel = 0;      // zero-based channel index
    quint32 element = 0;     // element code: 0x1000/0x2000/0x4000 receive, 0x10000/0x20000/0x40000 send
    qint32 flow = 0;         // audio flow 0 to 7; 0 for the other elements
    quint32 field = 0;       // SetField: the field's flag bit (1 source port ... 16 interface)
    quint32 value = 0;       // number of the code
    quint32 audioLayout = 0; // total audio channels << 16 | channels per flow
    quint32 sourcePort = 0;
    quint32 destinationPort = 0;
    quint32 flags = 0;
    quint32 clockSource = 0;
    quint32 domain = 0;
    char sourceAddress[64] = {};
    char destinationAddress[64] = {};
    char interfaceAddress[64] = {};
    char text[64] = {}; // SetField: the address when field is an address or the interface
};

// Sends one command to the engine, or nothing without a hook. mode: 0 tells, 1 asks. Returns the hook's
// result; 0 without a hook. User interface thread.
int ipSetMode(MEDIACMD *command, int mode);

// Puts the host's hook in place (an empty function takes it out). It is called on the user interface
// thread and must not run an event loop.
using MediaHook = std::function<int(MEDIACMD *command, int mode)>;
void setMediaHook(MediaHook hook);

#endif
