#pragma once

#include <cstddef>
#include <string>
#include <thread>

// A serial line without a pace whose far end answers every `frameBytes` bytes with `replyBytes`, as
// fast as the machine goes. It answers on a thread of its own, so that the time it takes itself is
// not in the processor time of the thread that asks.
class AnsweringLine {
public:
    AnsweringLine(std::size_t frameBytes, std::size_t replyBytes);
    // Whoever opened the line has closed it by then.
    ~AnsweringLine();
    AnsweringLine(const AnsweringLine&) = delete;
    AnsweringLine& operator=(const AnsweringLine&) = delete;

    // The terminal to open, such as /dev/pts/3.
    const std::string& path() const { return path_; }

private:
    void answer(std::size_t frameBytes, std::size_t replyBytes) const;

    int far_ = -1;
    int near_ = -1; // held open, so that the line does not hang up between two openings
    std::string path_;
    std::thread thread_;
};
