// SPDX-License-Identifier: MIT
//
// A page for the view units: the controls that they are told of, on a bare widget.
#ifndef CORVEL_TEST_PAGE_H
#define CORVEL_TEST_PAGE_H

#include "app/view/channelview.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>

#include <initializer_list>

struct Page {
    Page()
    {
        for (const Side side : {Side::Receive, Side::Send}) {
            for (const Field field : {Field::SourceAddress, Field::DestinationAddress, Field::Interface})
                addField(side, field, new QLineAddress(&widget), nullptr);
            for (const Field field : {Field::SourcePort, Field::DestinationPort})
                addField(side, field, nullptr, new QLineEdit(&widget));
        }
        for (QRadioButton *&button : flowButtons)
            button = new QRadioButton(&flowGroup);
        controls.channel = newCombo({0, 1, 2});
        controls.type = newCombo({ChannelType::Smpte2110, 5, ChannelType::ClockDomainOwner});
        controls.video = new QRadioButton(&elementGroup);
        controls.audio = new QRadioButton(&elementGroup);
        controls.anc = new QRadioButton(&elementGroup);
        controls.audioChannels = newCombo({0, 2, 4, 8});
        controls.audioFlows = newCombo({1, 2, 3, 4});
        controls.receivePacketTime = newCombo({125, 1000});
        controls.sendPacketTime = newCombo({125, 1000});
    }

    ChannelView view() const { return ChannelView(controls, NetworkFields(rows), AudioFlows(flowButtons)); }

    QComboBox *newCombo(std::initializer_list<quint32> numbers)
    {
        QComboBox *combo = new QComboBox(&widget);
        for (const quint32 number : numbers)
            combo->addItem(QString::number(number), number);
        return combo;
    }

    void addField(Side side, Field field, QLineAddress *address, QLineEdit *edit)
    {
        rows.append({side, field, address, edit, new QCheckBox(&widget), new QCheckBox(&widget)});
    }

    QWidget widget;
    QGroupBox elementGroup; // radio buttons exclude each other by parent
    QGroupBox flowGroup;
    QVector<NetworkField> rows;
    AudioFlows::Buttons flowButtons = {};
    ChannelView::Controls controls = {};
};

#endif
