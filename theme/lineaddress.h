// SPDX-License-Identifier: MIT
//
// QLineAddress: an IPv4 address typed octet by octet. Four small line edits with "." between them
// stand in one frame; each takes 0 to 255 without leading zeros, and the cursor walks from octet to
// octet as an address is typed. The widget knows nothing of what the address is for: its owner
// fills it with setAddress() and reads it with address().
//
// To be used from the GUI thread only. No call blocks and none fails. A slot connected to one of
// the signals must not delete the widget at once (deleteLater() is fine): the octet that caused the
// signal may still be handling its key.
#ifndef CORVEL_LINEADDRESS_H
#define CORVEL_LINEADDRESS_H

#include <QFrame>
#include <QLineEdit> // complete, so that moc registers QLineEdit * for the queued connection
#include <QPointer>
#include <QString>

class OctetEdit;
class QKeyEvent;

class QLineAddress : public QFrame {
    Q_OBJECT

public:
    // What the field is meant for; decides only what an empty address is shown as.
    enum ipRangeType {
        unlimited = 0, // any unicast or multicast address: 1.0.0.0
        multicast = 1, // a multicast group: 239.0.0.0
    };
    enum {
        QTUTL_IP_SIZE = 4, // octets in an address
        MAX_DIGITS = 3,    // digits in an octet
    };

    // Shows 1.0.0.0. The octets and everything else inside belong to the widget.
    explicit QLineAddress(QWidget *parent = nullptr);

    // The four octet texts joined with ".", exactly as they stand: an octet left empty gives an
    // empty part (192..0.1), text that setAddress() brought in comes back unchanged.
    QString address() const;

    // Writes the parts of a dotted text into the octets from the left, unchecked. Fewer than four
    // parts leave the other octets as they were, the fifth and later ones are dropped. An empty
    // text puts the default address of the range. Emits none of the widget's signals.
    void setAddress(const QString &text);

    // Takes effect with the next empty setAddress(); the text shown stays as it is.
    void setIpRange(ipRangeType range);

    // Gives the octets exactly this font, then the frame. (A new widget has its octets one point
    // smaller than the font it inherits; this makes no such difference.) Not virtual in QWidget:
    // call it through a QLineAddress.
    void setFont(const QFont &font);

    // Names the widget for assistive tools, and with it each octet: "NAME, octet 1 of 4". An empty
    // name gives back the plain "octet 1 of 4" of a new widget.
    void setAccessibleNames(const QString &name);

    // Tells now, in order, of every key and edit that addressChanged() has yet to be emitted for. To be
    // called before anything that changes what the address belongs to. Leaving the widget does it too.
    void finishKeys();
    // True while there is something that finishKeys() would tell of.
    bool hasPendingKeys() const;

    // True when the user changed an octet since setAddress(): one of the line edits is modified.
    bool isModified() const;

    // True while an octet is empty.
    bool isIncomplete() const;

    // The owner's verdict on the address. The widget bears the dynamic property "invalid", for the style
    // sheet, while the verdict is bad, and also from leaving it with an empty octet until none is empty.
    void setInvalid(bool invalid);

    // Key, mouse and focus handling of the octets. Never keeps an event from them.
    bool eventFilter(QObject *watched, QEvent *event) override;

    // Octet 0 (leftmost) to 3, named "octet0" to "octet3"; made once and never replaced.
    QLineEdit *m_pLineEdit[QTUTL_IP_SIZE] = {};
    ipRangeType m_ipRange = unlimited;

signals:
    // An octet is about to get a key that may change its text. For the widget's own use.
    void signalTextChanged(QLineEdit *edit);
    // A key that may have changed the address has been handled, or text was cut, pasted or dropped: a
    // whole address counts as one edit. Comes from the event loop, after the key took effect, but never
    // later than finishKeys() and processReturn(). Backspace, the keys that only move on, modifiers and
    // commands (Ctrl, Alt, Meta) do not cause it.
    void addressChanged();
    // The focus has left the widget as a whole: by Return or Enter, by Tab or mouse, or because
    // another window came to the front. Moving between the octets does not cause it.
    void processReturn();

public slots:
    // Moves on from a full octet, unless the focus has gone elsewhere since, and emits addressChanged().
    // Anything but one of the four octets is ignored.
    void slotTextChanged(QLineEdit *edit);

protected:
    // A click beside the octets goes to the nearest one.
    void mousePressEvent(QMouseEvent *event) override;
    // Beside the octets only a text with a whole address fits.
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    friend class OctetEdit; // copies, pastes and hands on keys through the four functions below
    bool takeAddress(const QString &text);
    void copyAddress() const;
    void announceEdit();
    QLineEdit *takeKeyTarget();

    void addOctet(int index);
    void clickOctet(int index);
    void showMark();
    bool hasFocusInside() const;
    void octetEvent(int index, QEvent *event);
    void keyPressed(int index, const QKeyEvent &event);
    void act(int index, int key);
    void announceKey(int index);
    void moveNextLineEdit(int index);
    void movePrevLineEdit(int index);
    bool advanceIsDue(int index) const;
    void advance(int index);
    void settle(int index);
    void focusLeft(int index);
    void giveFocusBack(int index);
    void keepPlace(int index, QWidget *owner);
    void ownerEvent(QEvent *event);
    void goOnFromPlace();
    int octetIndex(const QObject *object) const;

    // Keys of an octet that slotTextChanged() has yet to see: those that may still move on from it, and
    // before them those that may not, because the focus has left the octet since.
    int m_nAnnounced[QTUTL_IP_SIZE] = {};
    int m_nSettled[QTUTL_IP_SIZE] = {};
    int m_nEdits = 0;                  // cut, pasted or dropped, addressChanged() yet to be emitted
    int m_nAdvancedTo = -1;            // octet entered by an automatic advance, nothing typed there since
    QLineEdit *m_pKeyTarget = nullptr; // octet that the key in hand goes on to
    bool m_bFocusCleared = false;      // Return was pressed while there was no parent to take the focus
    QPointer<QWidget> m_pPlaceKeeper;  // got the focus by Return; its next Tab goes on from m_nPlace
    int m_nPlace = 0;
    bool m_bPassing = false;      // the focus only passes through on that Tab
    bool m_bMarkedEmpty = false;  // left with an empty octet
    bool m_bOwnerInvalid = false; // setInvalid()
};

#endif
