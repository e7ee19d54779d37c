#pragma once

#include "pen.h"

namespace scribera::test {

// Base of the tests on the eager driver, whose window is there before the pad.
class EagerTest : public PadTest
{
protected:
    void SetUp() override
    {
        PadTest::SetUp();
        installDriver(SCRIBERA_EAGER_DRIVER);
        if (padCase().isWidget())
            pad().makeParent(true);
        m_threads = idleThreads();
    }

    void close()
    {
        EXPECT_EQ(api().UnInitialDevice(type()), 0);
        expectNothingLeft();
    }

    void expectNothingLeft()
    {
        processEvents();
        expectNoObject();
        EXPECT_EQ(api().GetTotalPacketsNumber(type()), -8);
        EXPECT_TRUE(threadsAre(m_threads));
    }

private:
    std::set<std::string> m_threads;
};

} // namespace scribera::test
