// Measures the program and prints one table (scripts/bench.sh). The real program runs in this
// process with all its windows; the programmer is simbox in a separate process. The benchmark fails
// if a function does not end with "OK!" or if the image read is not the one programmed.
#include "app/startup.h"
#include "app/state.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "files/hex_file.h"
#include "functions/frmFunction.h"
#include "link/frames.h"
#include "platform/qt/application.h"
#include "platform/qt/qt_machine.h"
#include "shell/mdiMain.h"
#include "tests/support/temporary_folder.h"

#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <unistd.h>

using namespace modFunc;
using std::chrono::duration;
using std::chrono::steady_clock;
using std::chrono::system_clock;

namespace {

constexpr std::int32_t deviceBytes = 65536;

void check(bool condition, const std::string& what) {
    if (!condition)
        throw std::runtime_error("bench: " + what);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

void row(const char* what, const char* format, double value, const std::string& beside = {}) {
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    std::printf("%-52s %12s%s\n", what, text, beside.empty() ? "" : ("   " + beside).c_str());
    std::fflush(stdout);
}

// A frame or reply in simbox's trace.
struct TraceLine {
    double seconds = 0; // when the frame or the first portion of the reply had arrived
    bool reply = false;
    int bytes = 0;
};

// Parses a line such as "0.001234 > 00 00 00 01 49  identify". A line for more than 16 bytes
// contains the first 16 bytes, then "... (260 bytes)", then the meaning.
TraceLine parseTraceLine(const std::string& line) {
    TraceLine parsed;
    char direction = 0;
    std::istringstream words(line.substr(0, line.find("  ")));
    words >> parsed.seconds >> direction;
    parsed.reply = direction == '<';
    for (std::string word; words >> word; ++parsed.bytes)
        if (word == "...") {
            words.ignore(2, '(');
            words >> parsed.bytes;
            break;
        }
    return parsed;
}

// simbox with an erased chip, connected through the link com5 in `folder`.
class Simbox {
public:
    Simbox(const TemporaryFolder& folder, const QStringList& options)
        : trace_(folder.file("trace.txt")) {
        process_.start(QStringLiteral(SIMBOX),
                       QStringList{QStringLiteral("--fill"), QStringLiteral("FF"),
                                   QStringLiteral("--link"),
                                   QString::fromStdString(folder.file("com5")),
                                   QStringLiteral("--trace"), QString::fromStdString(trace_)} +
                           options);
        check(process_.waitForReadyRead(5000), "simbox does not start");
    }
    ~Simbox() {
        process_.terminate();
        process_.waitForFinished();
    }
    // The lines added to the trace since the last call.
    std::vector<TraceLine> newLines() {
        std::vector<TraceLine> lines;
        std::ifstream trace(trace_);
        trace.seekg(position_);
        for (std::string line; std::getline(trace, line); position_ = trace.tellg())
            lines.push_back(parseTraceLine(line));
        return lines;
    }

private:
    std::string trace_;
    std::ifstream::pos_type position_ = 0;
    QProcess process_;
};

// Presses OK in each message box.
class OkPresser : public QObject {
    bool eventFilter(QObject* object, QEvent* event) override {
        auto* box = qobject_cast<QMessageBox*>(object);
        if (box && event->type() == QEvent::Show)
            QMetaObject::invokeMethod(
                box, [box] { box->button(QMessageBox::Ok)->click(); }, Qt::QueuedConnection);
        return false;
    }
};

// The program, composed as in app/main.cpp. Its data files are in the current directory.
struct Program {
    Program() {
        window.Load();
        window.show();
        while (!window.windowHandle()->isExposed())
            QApplication::processEvents();
        check(state().ProgrammerFound, "simbox was not found");
    }
    void loadImage() {
        machine.cdia.FileName = IMAGE;
        OpenHexFile(); // opens the hex view as well
    }

    QtMachine machine{state().AppPath};
    mdiMain window{machine};
};

// Runs in the child process, which was started at `epochMs`. Prints the milliseconds from that time
// until the main window was visible, and the resident memory in MiB with an image loaded and the
// hex view open.
void startAndPrint(double epochMs) {
    Program program;
    const duration<double, std::milli> now = system_clock::now().time_since_epoch();
    program.loadImage();
    QApplication::processEvents();
    long pages = 0;
    std::ifstream("/proc/self/statm").ignore(20, ' ') >> pages;
    std::printf("%f %f\n", now.count() - epochMs,
                double(pages) * double(sysconf(_SC_PAGESIZE)) / (1 << 20));
}

void measureStart(const TemporaryFolder& folder) {
    constexpr int starts = 9;
    constexpr double splashMs = 1000;
    constexpr double discoveryMs = 100;
    const Simbox simbox(folder, {});
    std::vector<double> milliseconds;
    std::vector<double> mebibytes;
    for (int i = 0; i < starts; ++i) {
        QProcess child;
        const duration<double, std::milli> now = system_clock::now().time_since_epoch();
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("start"), QString::number(now.count(), 'f')});
        check(child.waitForFinished() && child.exitCode() == 0, "the program does not start");
        const QList<QByteArray> printed = child.readAllStandardOutput().split(' ');
        bool numbers = false;
        milliseconds.push_back(printed.value(0).toDouble() - splashMs - discoveryMs);
        mebibytes.push_back(printed.value(1).trimmed().toDouble(&numbers));
        check(numbers, "the locale has a decimal comma");
    }
    row("Start to main window, less fixed waits", "%.0f ms", median(milliseconds));
    row("Resident memory, image loaded, hex view open", "%.1f MiB", median(mebibytes));
}

struct RunTimes {
    double ms = 0;
    double cpuMs = 0;
};

// Times one run in the function window, from pressing Run to the end of its last pause.
RunTimes runFunction(Program& program, const char* function) {
    frmFunction window(&program.window);
    window.show();
    auto* list = window.findChild<QListWidget*>(QStringLiteral("listFunction"));
    list->setCurrentItem(list->findItems(QString::fromLatin1(function), Qt::MatchExactly).at(0));
    QApplication::processEvents();
    const steady_clock::time_point began = steady_clock::now();
    const std::clock_t cpuBegan = std::clock();
    window.findChild<QPushButton*>(QStringLiteral("cmdRun"))->click();
    const std::clock_t cpu = std::clock() - cpuBegan;
    const duration<double, std::milli> passed = steady_clock::now() - began;
    const QString line = window.findChild<QLabel*>(QStringLiteral("lblMsg(0)"))->text();
    check(line.endsWith(QLatin1String("OK!")), "the run ended with: " + line.toStdString());
    return {passed.count(), double(cpu) * 1000 / CLOCKS_PER_SEC};
}

// The minimum duration is the transmission time of all bytes, 10 bits each, plus the pauses.
void measureRun(Program& program, Simbox& simbox, const char* function, double pausesMs) {
    constexpr double byteMs = 10'000.0 / 57600;
    simbox.newLines();
    const RunTimes run = runFunction(program, function);
    double minMs = pausesMs;
    for (const TraceLine& line : simbox.newLines())
        minMs += line.bytes * byteMs;
    char beside[80];
    std::snprintf(beside, sizeof beside, "%.3f times the %.0f ms of transmission and pauses",
                  run.ms / minMs, minMs);
    row((std::string(function) + ", 64 KiB, 57600 baud").c_str(), "%.0f ms", run.ms, beside);
    row("  CPU time, share of one core", "%.2f %%", 100 * run.cpuMs / run.ms, "limit 2 %");
}

void measureRunsAt57600Baud(const TemporaryFolder& folder) {
    Simbox simbox(folder, {});
    Program program;
    program.loadImage();
    const Bytes image = state().BufferData;
    measureRun(program, simbox, "Blank", 200 + 200 + 500);
    measureRun(program, simbox, "Program", 500 + 200 + 500);
    measureRun(program, simbox, "Verify", 200 + 200 + 500);
    ClearImage();
    measureRun(program, simbox, "Read", 200 + 200 + 500);
    check(state().BufferData == image, "the chip does not hold the image");
}

// The gaps between a reply and the next frame are taken from simbox's trace, so they include
// simbox's own work on a reply. Blank is used because Read would open the hex view after its last
// block.
void measureGaps(const TemporaryFolder& folder) {
    Simbox simbox(folder, {QStringLiteral("--no-pace")});
    Program program;
    simbox.newLines();
    const RunTimes run = runFunction(program, "Blank");
    const std::vector<TraceLine> lines = simbox.newLines();
    std::vector<double> gapsMs;
    for (std::size_t i = 0; i + 1 < lines.size(); ++i)
        if (lines[i].reply && lines[i].bytes == readReplyBytes)
            gapsMs.push_back((lines[i + 1].seconds - lines[i].seconds) * 1000);
    check(gapsMs.size() == deviceBytes / blockBytes, "not every block was read");
    row("Blank, 64 KiB, unthrottled line", "%.0f ms", run.ms, "900 ms of it are pauses");
    row("  last byte of a reply to next frame, median of 256", "%.3f ms", median(gapsMs));
    row("  worst of 256", "%.3f ms", *std::ranges::max_element(gapsMs), "limit 2 ms");
}

template <typename Action>
double medianMs(int repetitions, const Action& action) {
    std::vector<double> values;
    for (int i = 0; i < repetitions; ++i) {
        const steady_clock::time_point began = steady_clock::now();
        action();
        values.push_back(duration<double, std::milli>(steady_clock::now() - began).count());
    }
    return median(values);
}

void measureFilesAndPage(const TemporaryFolder& folder) {
    Simbox simbox(folder, {});
    Program program;
    row("Intel HEX file of 64 KiB: load, hex view reopened", "%.2f ms",
        medianMs(51, [&] { program.loadImage(); }));
    program.machine.cdia.FileName = folder.file("saved.hex");
    row("  save", "%.2f ms", medianMs(51, [] { SaveHexFile(); }), "including the sync to disk");
    constexpr int pages = 1000;
    row("Text of a page of the hex view", "%.2f us",
        medianMs(51,
                 [] {
                     for (int i = 0; i < pages; ++i)
                         PageText(LastTopLine(deviceBytes), state().BufferData);
                 }) *
            1000 / pages);
}

void layOut(const TemporaryFolder& folder) {
    for (const auto& file : std::filesystem::directory_iterator(SHIPPED_DATA))
        std::filesystem::copy(file, folder.path());
    folder.write("quorven.dev", "\"64 KiB\",\"\",\"\",4,65536,0,0,0\r\n");
    folder.write("quorven.cfg", "5\r\n1\r\n1\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
    std::filesystem::current_path(folder.path());
}

} // namespace

int main(int argc, char** argv) {
    Application application(argc, argv);
    OkPresser okPresser;
    application.installEventFilter(&okPresser);
    try {
        if (argc == 3 && std::strcmp(argv[1], "start") == 0) {
            Main();
            startAndPrint(std::strtod(argv[2], nullptr));
            return 0;
        }
        const TemporaryFolder folder;
        layOut(folder);
        Main();
        measureStart(folder);
        measureRunsAt57600Baud(folder);
        measureGaps(folder);
        measureFilesAndPage(folder);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
