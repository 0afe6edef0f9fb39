// SPDX-License-Identifier: MIT
//
// View: the channel and element that the page shows, and the element's values on the screen. It knows
// neither where the values come from nor where they go.
#ifndef CORVEL_VIEW_CHANNELVIEW_H
#define CORVEL_VIEW_CHANNELVIEW_H

#include "app/view/audioflows.h"
#include "app/view/heldcontrols.h"
#include "app/view/networkfields.h"
#include "channel/elementvalues.h"

class QComboBox;
class QRadioButton;

class ChannelView : public ElementValues {
public:
    struct Controls {
        QComboBox *channel;
        QComboBox *type;
        QRadioButton *video;
        QRadioButton *audio;
        QRadioButton *anc;
        QComboBox *audioChannels;
        QComboBox *audioFlows;
        QComboBox *receivePacketTime;
        QComboBox *sendPacketTime;
    };

    ChannelView() = default;
    ChannelView(const Controls &controls, const NetworkFields &fields, const AudioFlows &flows);

    const NetworkFields &fields() const { return m_fields; }
    AudioFlows &flows() { return m_flows; }
    // What show() leaves alone.
    HeldControls &held() { return m_held; }

    // What the shown values belong to.
    struct Place {
        int channel;
        int type; // index of the entry
        Element element;
        quint32 flows; // see AudioFlows::checked
    };
    Place place() const;
    void go(const Place &place) const; // nothing is loaded

    // The zero-based index of the shown channel; -1 on a machine without channels.
    int channel() const;

    // The channel type; some types carry several elements, the others video only.
    bool isType(quint32 type) const;
    static bool isMultiType(quint32 type);
    bool isMultiType() const;

    bool isVideo() const;
    bool isAudio() const;
    bool isAnc() const;
    // Video when no element is chosen.
    Element element() const;

    // One value of the shown element, as the store has it. Both sides share one combo of channels per
    // flow.
    void show(Side side, Field field, const QString &text) override;
    QString value(Side side, Field field) const override;

private:
    QComboBox *packetTime(Side side) const;
    void showText(const NetworkField &field, const QString &text) const;

    Controls m_controls = {};
    NetworkFields m_fields;
    AudioFlows m_flows;
    HeldControls m_held;
};

#endif
