#pragma once

#include "platform/qt/form.h"

#include <array>

class QListWidget;
class QPushButton;

// The device list, with a drawing of the chip's position in the socket. OK or a double click
// selects the highlighted device; the caller then closes the hex view.
class frmSelectDevice : public Form {
    Q_OBJECT

public:
    explicit frmSelectDevice(QWidget* owner);

private:
    void addSocket();
    void connectHandlers();
    void listDevice_Click();
    void cmdOk_Click();
    // Shows the chip outline for the family in row `row` of DeviceList.
    void showOutline(int row);

    QListWidget* listDevice;
    QPushButton* cmdOk;
    QPushButton* cmdCancel;
    std::array<QWidget*, 4> shp1{}; // 0: the mark; 1..3: long, middle, short outline
};
