// Restrictions on the process that last as long as one of these objects exists.
#pragma once

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

// No file can grow beyond `bytes` bytes.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit{bytes, old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &old_); }

private:
    rlimit old_{};
};

// Only an ordinary user's rights.
class OrdinaryUser {
public:
    OrdinaryUser() : wasRoot_(geteuid() == 0 && setresuid(nobody, nobody, 0) == 0) {}
    ~OrdinaryUser() { EXPECT_TRUE(!wasRoot_ || setresuid(0, 0, 0) == 0); }

private:
    static constexpr uid_t nobody = 65534;
    bool wasRoot_;
};
