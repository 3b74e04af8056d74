#include "linux/OpenFiles.h"

#include "linux/Descriptor.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

namespace kelvo {

namespace {

bool hasThisProcess(const std::vector<RunningProgram>& programs) {
    return std::any_of(programs.begin(), programs.end(), [](const RunningProgram& program) {
        return program.process == ::getpid() && program.name == "linux-files-tes";
    });
}

TEST(OpenFiles, AProgramIsFoundForAsLongAsItHasTheFileOpen) {
    TemporaryDirectory folder;
    folder.write("node", "");
    EXPECT_TRUE(programsWithOpen(folder.path("node")).empty());
    {
        const Descriptor file(::open(folder.path("node").c_str(), O_RDONLY | O_CLOEXEC));
        ASSERT_TRUE(file);
        EXPECT_TRUE(hasThisProcess(programsWithOpen(folder.path("node"))));
    }
    EXPECT_TRUE(programsWithOpen(folder.path("node")).empty());
}

TEST(OpenFiles, WhatIsNotThereNobodyHasOpen) { EXPECT_TRUE(programsWithOpen("/nowhere/at/all").empty()); }

} // namespace

} // namespace kelvo
