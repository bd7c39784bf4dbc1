// Restrictions on the process that last as long as one of these objects exists.
#pragma once

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

// No file can grow beyond `bytes` bytes.
struct FullDisk {
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, RLIM_INFINITY};
        EXPECT_EQ(prlimit(0, RLIMIT_FSIZE, &limit, &old), 0);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &old); }
    rlimit old{};
};

// Only an ordinary user's rights.
struct OrdinaryUser {
    OrdinaryUser() : wasRoot(geteuid() == 0 && setresuid(65534, 65534, 0) == 0) {}
    ~OrdinaryUser() { EXPECT_TRUE(!wasRoot || setresuid(0, 0, 0) == 0); }
    bool wasRoot;
};
