// SPDX-License-Identifier: MIT
//
// Slots, closing: "Done", "Cancel" and "Show URLs".
#include "app/dialog/private.h"
#include "theme/lineaddress.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QRadioButton>

#include <cstdlib>

namespace {

// An address tells of a key only when the event loop gets to it. A key just before the button is told
// now.
void finishKeys(QCorvel *q)
{
    for (QLineAddress *address : q->findChildren<QLineAddress *>())
        QCoreApplication::sendPostedEvents(address, QEvent::MetaCall);
}

// A field that still has the focus would lose it when the dialog is hidden, after everything was sent,
// and count as edited then.
void leaveField(QCorvel *q)
{
    finishKeys(q);
    if (QWidget *field = q->focusWidget())
        field->clearFocus();
}

} // namespace

void QCorvel::ok()
{
    const QPointer<QCorvel> self(this); // a host may delete the dialog while the error list is open
    m_bClosing = true;
    if (isStandAlone()) {
        finishKeys(this);
        saveDataStandAlone();
        checkErrors();
        if (self)
            shutdown();
        return;
    }
    leaveField(this);
    updateSettings(true);
    checkErrors();
    if (self)
        done(1);
}

// Embedded: edits went to the engine and not to the store, so the engine gets back what is stored,
// element by element and flow by flow. The layout of the audio channels goes out with every element but is
// read with audio only, so audio is read first.
void QCorvel::cancel()
{
    if (isStandAlone()) {
        loadDataStandAlone();
        shutdown();
        return;
    }
    {
        const SignalBracket bracket(this);
        leaveField(this); // "Cancel" takes no focus; nothing listens to the field here
        const auto restore = [this] {
            loadDataStandAlone();
            updateSettings(false);
        };
        m_pAudioConfig->setChecked(true);
        loadDataStandAlone();
        for (QRadioButton *element : {m_pVideoConfig, m_pAncConfig}) {
            element->setChecked(true);
            restore();
        }
        m_pAudioConfig->setChecked(true);
        for (int flow = 0; flow < kFlowCount; ++flow) {
            d->view.flows().selectOnly(flow);
            restore();
        }
    }
    done(0);
}

void QCorvel::showurls()
{
    if (isStandAlone())
        loadDataStandAlone();
    else
        done(3);
}

void QCorvel::shutdown()
{
    killTimer(timerId);
    d->leaveKept();
    rkPTPEnd(hPTP);
    ::exit(0);
}
