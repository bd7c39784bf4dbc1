// What a screen reader gets, what the keyboard alone reaches, and the request to stay awake.
#include "tests/windows/window_fixture.h"

#include <QtDBus>

namespace {

struct Accessible : Windows {
    Accessible() { heard = {}, percents = {}; }
    QAccessibleInterface* interface(const char* control) {
        return QAccessible::queryAccessibleInterface(find(control));
    }
    static inline QString heard;
    static inline QList<int> percents;
    static inline qsizetype inserted;
    static inline std::weak_ptr<int> awake; // as long as the program keeps the reply
};

} // namespace

// In place of Qt's own, which do nothing unless a screen reader is on the accessibility bus.
bool QAccessible::isActive() {
    return true;
}
void QAccessible::updateAccessibility(QAccessibleEvent* event) {
    QAccessibleInterface* item = event->accessibleInterface();
    const Role role = item ? item->role() : NoRole; // no role while the object is being deleted
    EXPECT_FALSE(event->type() == Focus && role == Pane);
    // A dialog could close before its text has been read out; the main window stays.
    if (event->type() == ObjectShow && role == Notification &&
        event->object()->parent()->inherits("QMainWindow"))
        Accessible::heard += item->text(Name) + '|';
    else if (event->type() == ValueChanged && role == ProgressBar)
        Accessible::percents << item->valueInterface()->currentValue().toInt() * 100 /
                                    item->valueInterface()->maximumValue().toInt();
    else if (event->type() == TextUpdated)
        Accessible::inserted +=
            static_cast<QAccessibleTextUpdateEvent*>(event)->textInserted().size();
    else if (event->type() == Alert) // copies the text of a message box by keyboard
        for (const auto key :
             {Qt::NoModifier | Qt::Key_Tab, Qt::CTRL | Qt::Key_A, Qt::CTRL | Qt::Key_C})
            QTest::keyClick(qobject_cast<QWidget*>(event->object())->focusWidget(), key.key(),
                            key.keyboardModifiers());
}

// In place of the login manager.
QDBusPendingCall QDBusConnection::asyncCall(const QDBusMessage& request, int) const {
    const auto held = std::make_shared<int>();
    Accessible::awake = held;
    for (const QVariant& text :
         QVariantList{request.service(), request.path(), request.interface(), request.member()} +
             request.arguments())
        Accessible::heard += text.toString() + '|';
    return QDBusPendingCall::fromCompletedCall(request.createReply(QVariant::fromValue(held)));
}

TEST_F(Accessible, ThePageIsReadAndTypedDigitByDigit) {
    start(noPort);
    trigger("DeviceSelect", {[&] {
                find<QListWidget>("listDevice")->setCurrentRow(9); // the last long one
                heard += find("listDevice")->accessibleDescription() + '|';
                escape();
            }});
    trigger("BufferEdit");
    QTest::keyClicks(find("txtBuffer"), "01");
    press(Qt::Key_Tab, Qt::Key_Down, Qt::Key_Up, Qt::Key_Tab); // in the scroll bar
    press(Qt::Key_Right, Qt::Key_Right);
    for (int line = 0; line < 16; ++line)
        press(Qt::Key_Down);
    inserted = 0;
    QTest::keyClicks(find("txtBuffer"), "a5");
    EXPECT_EQ(heard, "Long chip, as long as the socket, at the lower end of the socket, its mark "
                     "at that end too|"
                     "0001 FF|0010 FF|0000 01|0001 FF|"
                     "0100=FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF ................|"
                     "0102 FF|");
    EXPECT_EQ(inserted, 2 * 69) << "only the changed line";
    const QAccessible::State state = interface("txtBuffer")->state();
    EXPECT_TRUE(state.editable && state.multiLine);
    auto* page = interface("txtBuffer")->textInterface();
    auto* editor = interface("txtBuffer")->editableTextInterface();
    const int at = page->cursorPosition();
    EXPECT_EQ(page->text(at - 11, at + 3), "0100=FF A5 FF ");
    EXPECT_EQ(page->characterCount(), page->text(0, 9999).size());
    EXPECT_EQ(page->selectionCount(), 0);
    EXPECT_EQ(page->offsetAtPoint(page->characterRect(at).center()), at);
    editor->replaceText(at - 2, 1, "77"); // a digit and a space
    editor->insertText(at - 1, "9");      // not a digit
    EXPECT_EQ(page->text(at - 11, at + 3), "0100=FF A7 7F ");
    EXPECT_EQ(page->cursorPosition(), at + 1);
    auto* frame = QAccessible::queryAccessibleInterface(find("frmBuffer")->parentWidget());
    EXPECT_EQ(std::pair(frame->role(), frame->text(QAccessible::Name)),
              std::pair(QAccessible::Pane, QString("Buffer")));
}

TEST_F(Accessible, ARunIsHeardAndKeepsTheComputerAwake) {
    startProgrammer(" --fault late@W:40ms");
    start("i Device Found!: Firmware: SimBox v1.00");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "Firmware: SimBox v1.00");
    trigger("BufferEdit");
    const auto run = [&](int row) {
        find<QListWidget>("listFunction")->setCurrentRow(row);
        click("cmdRun");
    };
    QElapsedTimer time;
    time.start();
    actions = {[&] {
        QTimer::singleShot(100, [&] { EXPECT_FALSE(awake.expired()); });
        run(3);
        EXPECT_TRUE(awake.expired());
        EXPECT_EQ(interface("lblMsg(0)")->text(QAccessible::Name), "Programming ...   OK!");
        EXPECT_EQ(interface("lblMsg(1)")->text(QAccessible::Name), "") << "not the frame's";
        click("cmdClose");
    }};
    QTest::keyClick(find<QMenu>("Device"), 'f'); // not an access key
    EXPECT_TRUE(QTest::qWaitFor([&] { return percents.last() == 100; }));
    EXPECT_TRUE(std::ranges::is_sorted(percents) && percents.size() > 2);
    EXPECT_LE(percents.size(), 2 + time.elapsed() / 250) << "at most four a second";
    trigger("DeviceFunction", {[&] { run(0); }});
    const QString request = "org.freedesktop.login1|/org/freedesktop/login1|"
                            "org.freedesktop.login1.Manager|Inhibit|"
                            "sleep:idle|quorven|A chip is in use|block|";
    EXPECT_EQ(heard, request + "Programming ...|Programming ...   OK!|" + request +
                         "Reading ...|Reading ...   OK!|");
    EXPECT_EQ(mdi->focusWidget(), find("txtBuffer"));
}
