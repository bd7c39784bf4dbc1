// Restrictions on the process that last as long as one of these objects exists.
#pragma once

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

// No file can grow beyond `bytes` bytes.
struct FullDisk {
    explicit FullDisk(rlim_t bytes) : limit{bytes, RLIM_INFINITY} {
        std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(prlimit(0, RLIMIT_FSIZE, &limit, &limit), 0); // `limit` is then the earlier one
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &limit); }
    rlimit limit;
};

// Only an ordinary user's rights.
struct OrdinaryUser {
    OrdinaryUser() : wasRoot(geteuid() == 0 && setresuid(65534, 65534, 0) == 0) {}
    ~OrdinaryUser() { EXPECT_TRUE(!wasRoot || setresuid(0, 0, 0) == 0); }
    bool wasRoot;
};
