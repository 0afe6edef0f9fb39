// SPDX-License-Identifier: MIT
//
// The place of an NMOS node (AMWA IS-04, IS-05) inside the process. The node runs in a service of its
// own, so the thread starts, does nothing and ends.
#ifndef CORVEL_NMOSTHREAD_H
#define CORVEL_NMOSTHREAD_H

#include <QThread>

class NmosThread : public QThread {
    Q_OBJECT

public:
    using QThread::QThread;

protected:
    void run() override;
};

// Starts the node; 0 at once.
int nmosInitNode();

#endif
