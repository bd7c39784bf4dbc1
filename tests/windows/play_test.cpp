// tests/windows/plays.txt, played by clicks and keys on the real windows.
#include "tests/support/table_file.h"
#include "tests/windows/window_fixture.h"

#include <QKeySequence>

using namespace modFunc;

namespace {

using Row = std::vector<std::string>; // window, step, control, value

class Player : public Windows {
public:
    explicit Player(std::vector<Row> rows) : rows_(std::move(rows)) {}

private:
    void TestBody() override {
        for (std::size_t next = 0; next < rows_.size();) {
            const Row& here = rows_[next++];
            // What is done in the windows that this step brings up.
            while (next < rows_.size() && !rows_[next][0].empty()) {
                const std::size_t first = next;
                while (next < rows_.size() && rows_[next][0] == rows_[first][0])
                    ++next;
                when(rows_[first][0].c_str(), [this, first, next](QWidget& window) {
                    for (std::size_t i = first; i < next; ++i)
                        step(&window, rows_[i]);
                });
            }
            step(mdi.get(), here);
        }
        EXPECT_EQ(messages, QStringList());
    }
    void step(QWidget* window, const Row& row) {
        SCOPED_TRACE(testing::PrintToString(row));
        const std::string& name = row[2];
        const QString value = QString::fromStdString(row[3]).replace(
            QStringLiteral("DATA"), QString::fromStdString(folder.path()));
        const std::map<std::string, std::function<void()>> verbs = {
            {"start", [&] { start(); }},
            {"box", [&] { startBox(); }},
            {"menu", [&] { trigger(name.c_str()); }},
            {"click", [&] { clickTimes(window, name, std::max(1, value.toInt())); }},
            {"key", [&] { press(window, name, QKeySequence(value)[0]); }},
            {"type", [&] { QTest::keyClicks(in<QWidget>(*window, name.c_str()), value); }},
            {"set", [&] { EXPECT_TRUE(set(window, name, value)); }},
            {"see", [&] { EXPECT_EQ(shown(window, name), value); }},
            {"find", [&] { EXPECT_TRUE(shown(window, name).contains(value)); }},
            {"gone", [&] { EXPECT_FALSE(in<QWidget>(*window, name.c_str())); }},
            {"says", [&] { EXPECT_TRUE(nextMessage().startsWith(value)) << lastMessage; }},
            {"file", [&] { folder.write(name, unescaped(row[3])); }},
            {"remove", [&] { folder.remove(name); }},
            {"holds", [&] { EXPECT_EQ(folder.read(name), unescaped(row[3])); }},
            {"chip", [&] { expectInChip(std::stoul(name)); }},
            {"trace", [&] { EXPECT_TRUE(frames().value(frames().size() - 1).endsWith(value)); }},
        };
        verbs.at(row[1])();
    }
    void start() {
        ReadSettings();
        ReadDeviceList();
        ReadAutoFile();
        Windows::start();
    }
    static void clickTimes(QWidget* window, const std::string& button, int times) {
        for (int i = 0; i < times; ++i)
            click(*window, button.c_str());
    }
    static void press(QWidget* window, const std::string& control, QKeyCombination key) {
        QTest::keyClick(control.empty() ? window->focusWidget()
                                        : in<QWidget>(*window, control.c_str()),
                        key.key(), key.keyboardModifiers());
    }
    // "txtStart.enabled": a control, or the window where none is named, and a property.
    static std::pair<QObject*, QByteArray> find(QWidget* window, const std::string& name) {
        const QString control = QString::fromStdString(name).section(u'.', 0, 0);
        const QString property = QString::fromStdString(name).section(u'.', 1);
        return {control.isEmpty() ? window : window->findChild<QObject*>(control),
                property.isEmpty() ? "text" : property.toLatin1()};
    }
    static QString shown(QWidget* window, const std::string& name) {
        const auto [object, property] = find(window, name);
        return object ? object->property(property).toString().trimmed() : QStringLiteral("nothing");
    }
    static bool set(QWidget* window, const std::string& name, const QString& value) {
        const auto [object, property] = find(window, name);
        return object && object->setProperty(property, value);
    }
    QString nextMessage() {
        const QString message = messages.value(0);
        messages = messages.mid(1);
        lastMessage = message.toStdString();
        return message;
    }
    // The chip holds as many bytes of the image, and nothing else.
    void expectInChip(std::size_t bytes) {
        std::string expected(65536, '\xFF');
        std::copy_n(state().BufferData.begin(), bytes, expected.begin());
        EXPECT_EQ(chip(65536), expected);
    }

    std::vector<Row> rows_;
    std::string lastMessage;
};

const bool registered = [] {
    std::map<std::string, std::vector<Row>> plays;
    std::string play;
    for (Row& row : readTable(TEST_FILES "/windows/plays.txt")) {
        if (row.size() == 1) {
            play = row[0];
            continue;
        }
        row.resize(4);
        plays[play].push_back(row);
    }
    for (const auto& [name, rows] : plays)
        testing::RegisterTest("Plays", name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                              [rows = rows]() -> Windows* { return new Player(rows); });
    return true;
}();

} // namespace
