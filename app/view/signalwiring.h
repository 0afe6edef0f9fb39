// SPDX-License-Identifier: MIT
//
// View: a list of connections that are made and undone together. connectAll and disconnectAll nest: only
// the outermost pair touches the connections, and they are really taken away, so that a sender's other
// receivers still hear of a change. A list starts disconnected.
#ifndef CORVEL_VIEW_SIGNALWIRING_H
#define CORVEL_VIEW_SIGNALWIRING_H

#include <QObject>

#include <functional>
#include <vector>

class SignalWiring {
public:
    // Appends one connection. Both objects have to live as long as the list is used.
    template<class Sender, class Signal, class Receiver, class Slot>
    void add(Sender *sender, Signal signal, Receiver *receiver, Slot slot)
    {
        m_links.push_back([=, made = QMetaObject::Connection()](bool on) mutable {
            if (!on)
                QObject::disconnect(made);
            else if (!made)
                made = QObject::connect(sender, signal, receiver, slot);
        });
    }

    // Undoes one disconnectAll. More calls than those neither connect twice nor count.
    void connectAll();
    void disconnectAll();

private:
    void apply(bool on);

    std::vector<std::function<void(bool on)>> m_links; // in the order in which slots run
    int m_depth = 1;                                   // 0: connected
};

#endif
