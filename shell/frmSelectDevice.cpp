#include "shell/frmSelectDevice.h"

#include "app/family_traits.h"
#include "app/state.h"
#include "app/status_bar.h"
#include "platform/qt/controls.h"
#include "platform/qt/list.h"

#include <QListWidget>
#include <QPainter>
#include <QPushButton>

using namespace modFunc;

namespace {

// A one-pixel outline along the inside of the widget's edges.
class Outline : public QWidget {
public:
    Outline(QWidget* parent, const char* name, const QColor& colour, const TwipsRect& twips,
            const QBrush& ground = {})
        : QWidget(parent), colour_(colour), ground_(ground) {
        setObjectName(QString::fromLatin1(name));
        setGeometry(twips.inPixels());
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(colour_);
        painter.setBrush(ground_);
        painter.drawRect(insidePen(rect()));
    }

private:
    QColor colour_;
    QBrush ground_;
};

} // namespace

frmSelectDevice::frmSelectDevice(QWidget* owner)
    : Form(owner, "frmSelectDevice", tr("Select Device"), 4215, 2895, Frame::TitleAndCloseBox) {
    listDevice = addList(this, "listDevice", tr("Device"), {240, 120, 2055, 2595});
    addSocket();
    cmdOk = addButton(this, "cmdOk", tr("OK"), {2520, 2400, 735, 375});
    cmdOk->setDefault(true);
    cmdCancel = addButton(this, "cmdCancel", tr("Cancel"), {3360, 2400, 735, 375});
    followInTabOrder({listDevice, cmdOk, cmdCancel});

    const State& s = state();
    for (int row = 1; row <= s.DeviceCount; ++row)
        listDevice->addItem(
            QString::fromStdString(s.DeviceList.at(static_cast<std::size_t>(row)).Name));
    listDevice->setCurrentRow(s.SelectedDevice - 1);
    showOutline(s.SelectedDevice);
    connectHandlers();
}

// The socket and the chip outlines. Chips of all lengths are at the lower end of the socket.
void frmSelectDevice::addSocket() {
    const QColor blue(0, 0, 255);
    constexpr TwipsRect stroke{3563, 2040, 75, 120}; // five pixels wide, centred at 3600 twips
    new Outline(this, "Shape1", Qt::black, {3000, 120, 615, 1935}, lightGround());
    addRectangle(this, "Line1", palette().color(QPalette::WindowText), stroke);
    shp1[1] = new Outline(this, "shp1(1)", blue, {3120, 240, 375, 1695});
    shp1[2] = new Outline(this, "shp1(2)", blue, {3120, 960, 375, 975});
    shp1[3] = new Outline(this, "shp1(3)", blue, {3120, 1560, 375, 375});
    shp1[0] = new Outline(this, "shp1(0)", blue, {3240, 1800, 135, 135});
}

void frmSelectDevice::connectHandlers() {
    connect(listDevice, &QListWidget::itemSelectionChanged, this,
            &frmSelectDevice::listDevice_Click);
    connect(listDevice, &QListWidget::itemDoubleClicked, this, &frmSelectDevice::cmdOk_Click);
    connect(cmdOk, &QPushButton::clicked, this, &frmSelectDevice::cmdOk_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void frmSelectDevice::showOutline(int row) {
    const int family = state().DeviceList.at(static_cast<std::size_t>(row)).Family;
    const ChipOutline visible = TraitsOf(family).outline;
    shp1[1]->setVisible(visible == ChipOutline::Long);
    shp1[2]->setVisible(visible == ChipOutline::Middle);
    shp1[3]->setVisible(visible == ChipOutline::Short);
    const QString length = visible == ChipOutline::Long     ? tr("Long chip, as long as the socket")
                           : visible == ChipOutline::Middle ? tr("Chip of medium length")
                                                            : tr("Short chip");
    listDevice->setAccessibleDescription(
        length + tr(", at the lower end of the socket, its mark at that end too"));
}

// Rows of DeviceList are numbered from 1. If no row of the list box is highlighted, row 0 of
// DeviceList is used, which is empty.
void frmSelectDevice::listDevice_Click() {
    showOutline(highlightedRow(listDevice) + 1);
}

void frmSelectDevice::cmdOk_Click() {
    state().SelectedDevice = static_cast<std::int16_t>(highlightedRow(listDevice) + 1);
    ShowDevice();
    accept();
}
