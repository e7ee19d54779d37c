// The tests look at files with fixed names below /tmp, and at what is left there.
#include "surroundings.h"

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    if (!scribera::test::makeTmpPrivate({SCRIBERA_BINARY_DIR, SCRIBERA_SOURCE_DIR}))
        scribera::test::lockSharedTmp();
    return RUN_ALL_TESTS();
}
