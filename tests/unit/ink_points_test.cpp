// The list of ink points across the blocks that it keeps them in.

#include "harness.h"

#include "ink/inkpoints.h"

namespace scribera::test {
namespace {

constexpr std::size_t block = CInkChunk::kSize;

// Records that can be told apart.
std::vector<_POINTDATA> records(std::size_t count, int first)
{
    std::vector<_POINTDATA> all(count);
    for (std::size_t i = 0; i < count; ++i)
        all[i].llTick = first + static_cast<int>(i);
    return all;
}

void append(CInkPointList& list, std::size_t count)
{
    const std::vector<_POINTDATA> added = records(count, list.Count());
    list.AppendRecords(reinterpret_cast<const char*>(added.data()), count);
}

void expectInOrder(const CInkPointList& list, std::size_t count)
{
    ASSERT_EQ(list.Count(), static_cast<int>(count));
    const CInkSnapshot snapshot = list.Snapshot();
    ASSERT_EQ(snapshot.Count(), count);
    for (std::size_t i = 0; i < count; ++i) {
        _POINTDATA point;
        ASSERT_TRUE(list.At(static_cast<int>(i), point)) << i;
        ASSERT_EQ(point.llTick, static_cast<std::int64_t>(i));
        ASSERT_EQ(snapshot.At(i).llTick, static_cast<std::int64_t>(i));
    }
    std::size_t visited = 0;
    snapshot.ForEachRun([&](const _POINTDATA* first, std::size_t run) {
        ASSERT_GT(run, 0u);
        for (std::size_t i = 0; i < run; ++i)
            ASSERT_EQ(first[i].llTick, static_cast<std::int64_t>(visited + i));
        visited += run;
    });
    EXPECT_EQ(visited, count);
}

TEST(InkPointList, RecordsFollowWhatIsThere)
{
    for (const std::size_t there : {std::size_t{0}, std::size_t{3}, block - 1, block, block + 1}) {
        for (const std::size_t added :
             {std::size_t{0}, std::size_t{1}, block - there % block, block, 2 * block + 5}) {
            SCOPED_TRACE(testing::Message() << there << " and " << added);
            CInkPointList list;
            append(list, there);
            append(list, added);
            expectInOrder(list, there + added);
        }
    }
}

TEST(InkPointList, PointsAndRecordsMix)
{
    CInkPointList list;
    for (std::size_t i = 0; i < block - 1; ++i)
        list.Append(records(1, static_cast<int>(i)).front());
    append(list, 2);
    for (std::size_t i = block + 1; i < 2 * block + 2; ++i)
        list.Append(records(1, static_cast<int>(i)).front());
    expectInOrder(list, 2 * block + 2);
}

TEST(InkPointList, SnapshotKeepsWhatIsClearedAndWhatComesLater)
{
    CInkPointList list;
    append(list, block + 2);
    const CInkSnapshot before = list.Snapshot();
    append(list, block);
    EXPECT_EQ(before.Count(), block + 2);
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
    _POINTDATA stored;
    EXPECT_FALSE(list.AppendStrokeEnd(stored));
    append(list, 1);
    expectInOrder(list, 1);
    ASSERT_EQ(before.Count(), block + 2);
    EXPECT_EQ(before.At(block + 1).llTick, static_cast<std::int64_t>(block + 1));
}

} // namespace
} // namespace scribera::test
