// Who may include whom in the tree, and that nothing includes itself by a detour.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "processes.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

// A folder, with everything below it that has no row of its own, and the folders that it may include. Its own
// files are always allowed. The same table stands in docs/architecture.md.
struct Row
{
    std::string folder;
    std::set<std::string> mayInclude;
    bool widgets = false; // may include headers of Qt's widgets

    bool operator==(const Row&) const = default;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.folder << " ->";
    for (const std::string& folder : row.mayInclude)
        *out << " " << folder;
    *out << (row.widgets ? ", widgets" : "");
}

// From what hosts see down to what stands on nothing, then what stands outside.
const std::vector<Row>& table()
{
    static const std::vector<Row> rows = {
        {"include", {}},
        {"src/sdk",
         {"include", "src/signwidget", "src/signobj", "src/signobject", "src/export", "src/canvas",
          "src/threads", "src/gui", "src/model", "src/log", "src/sync"},
         true},
        {"src/signwidget", {"src/signobject", "src/fingerprint", "src/canvas", "src/gui", "src/sync"}, true},
        {"src/signobj", {"src/signobject", "src/fingerprint", "src/gui"}},
        {"src/signobject",
         {"include", "src/fingerprint", "src/export", "src/pen", "src/canvas", "src/ink", "src/driver",
          "src/threads", "src/model", "src/sync"}},
        {"src/fingerprint",
         {"include", "src/export", "src/canvas", "src/driver", "src/gui", "src/model", "src/sync"},
         true},
        {"src/export", {"src/pen", "src/canvas", "src/ink", "src/model", "src/log", "src/sync"}},
        {"src/pen", {"include", "src/canvas", "src/ink", "src/model", "src/sync"}},
        {"src/canvas", {"src/model", "src/log", "src/sync"}},
        {"src/ink", {"include", "src/log", "src/sync"}},
        {"src/driver", {"src/model", "src/sync"}},
        {"src/threads", {"src/model", "src/sync"}},
        {"src/gui", {"src/sync"}, true},
        {"src/model", {"include", "src/log"}},
        {"src/log", {"include", "src/sync"}},
        {"src/sync", {}},
        {"translations", {}},
        {"drivers/pen", {"src/model", "translations"}},
        {"drivers/simulator", {"src/model", "translations"}},
        {"drivers/simulator/virtualpad", {"drivers/simulator", "translations"}, true},
        {"tools",
         {"src/export", "src/canvas", "src/pen", "src/ink", "src/model", "drivers/simulator",
          "translations"}},
        {"tools/pad",
         {"include", "src/export", "src/model", "drivers/pen", "drivers/simulator", "tools"},
         true},
        {"tools/sign", {"src/pen", "src/ink", "src/model", "tools", "tools/pad", "translations"}},
        {"web/bridge", {"include", "tools", "tools/pad"}},
        {"examples", {"include"}, true},
        {"docs", {"include"}, true},
        {"bench",
         {"include", "src/signobj", "src/export", "src/canvas", "src/ink", "drivers/simulator", "tests",
          "tests/host"},
         true},
        {"fuzz",
         {"include", "src/ink", "src/model", "drivers/pen", "drivers/simulator",
          "drivers/simulator/virtualpad", "tools", "tools/sign", "web/bridge"}},
        {"tests",
         {"include", "src/ink", "src/model", "drivers/pen", "drivers/simulator",
          "drivers/simulator/virtualpad", "examples", "tools", "tools/pad", "translations", "tests/host"},
         true},
        {"tests/host", {"include", "src/model", "drivers/simulator"}, true},
        {"tests/unit",
         {"include", "src/signobj", "src/signobject", "src/fingerprint", "src/export", "src/pen",
          "src/canvas", "src/ink", "src/model", "src/log", "tests/host"}},
    };
    return rows;
}

struct Include
{
    std::string from; // relative to the tree, as is the target
    int line;
    std::string name;   // as written
    std::string target; // empty for a header from outside the tree
};

std::string place(const Include& include)
{
    return include.from + ":" + std::to_string(include.line) + " includes " + include.name;
}

// What the line includes, in either form; nothing for any other line.
std::optional<std::string> includedBy(const std::string& line)
{
    std::size_t at = line.find_first_not_of(" \t");
    if (at == std::string::npos || line[at] != '#')
        return std::nullopt;
    at = line.find_first_not_of(" \t", at + 1);
    if (at == std::string::npos || line.compare(at, 7, "include") != 0)
        return std::nullopt;
    const std::size_t begin = line.find_first_of("<\"", at);
    const std::size_t end = begin == std::string::npos ? begin : line.find_first_of(">\"", begin + 1);
    if (end == std::string::npos)
        return std::nullopt;
    return line.substr(begin + 1, end - begin - 1);
}

const fs::path& tree()
{
    static const fs::path path = SCRIBERA_SOURCE_DIR;
    return path;
}

bool isSource(const fs::path& path)
{
    static const std::set<std::string> endings = {".h", ".hpp", ".c", ".cpp", ".cc", ".inl"};
    return endings.contains(path.extension());
}

// All sources of the tree, relative to it. Build trees and what tools leave behind do not belong to it.
const std::vector<std::string>& sources()
{
    static const std::vector<std::string> found = [] {
        std::vector<std::string> files;
        for (auto at = fs::recursive_directory_iterator(tree()); at != fs::recursive_directory_iterator();
             ++at) {
            const std::string name = at->path().filename();
            if (at->is_directory() && (name == "build" || name == "demo-out" || name == "node_modules" ||
                                       name.starts_with(".") || fs::exists(at->path() / "CMakeCache.txt")))
                at.disable_recursion_pending();
            else if (at->is_regular_file() && isSource(at->path()))
                files.push_back(fs::relative(at->path(), tree()));
        }
        std::sort(files.begin(), files.end());
        return files;
    }();
    return found;
}

// Where the compiler finds a header of the tree: beside the file that includes it, or below an include root.
std::string targetOf(const std::string& from, const std::string& name)
{
    static const std::vector<fs::path> roots = {"src",
                                                "include",
                                                "",
                                                "drivers",
                                                "drivers/pen",
                                                "drivers/simulator",
                                                "drivers/simulator/virtualpad",
                                                "tools",
                                                "tests/host",
                                                "tests",
                                                "fuzz",
                                                "examples/qt-host",
                                                "tools/pad",
                                                "tools/sign",
                                                "web/bridge",
                                                "translations"};
    const auto existing = [&](const fs::path& folder) -> std::string {
        const fs::path path = (folder / name).lexically_normal();
        return fs::is_regular_file(tree() / path) ? path.string() : std::string();
    };
    if (std::string beside = existing(fs::path(from).parent_path()); !beside.empty())
        return beside;
    for (const fs::path& root : roots)
        if (std::string below = existing(root); !below.empty())
            return below;
    return {};
}

const std::vector<Include>& includes()
{
    static const std::vector<Include> found = [] {
        std::vector<Include> list;
        for (const std::string& source : sources()) {
            std::ifstream in(tree() / source);
            int number = 0;
            for (std::string line; std::getline(in, line);) {
                ++number;
                if (const std::optional<std::string> name = includedBy(line))
                    list.push_back({source, number, *name, targetOf(source, *name)});
            }
        }
        return list;
    }();
    return found;
}

// The row of the deepest folder that holds the file; null when no row does.
const Row* rowOf(const std::vector<Row>& table, const std::string& file)
{
    const Row* best = nullptr;
    for (const Row& row : table)
        if (file.starts_with(row.folder + "/") && (!best || row.folder.size() > best->folder.size()))
            best = &row;
    return best;
}

bool isWidgetsHeader(const std::string& name)
{
    const std::string base = fs::path(name).filename();
    std::istringstream directories(SCRIBERA_QTWIDGETS_HEADERS);
    for (std::string directory; std::getline(directories, directory, ':');)
        if (fs::path(directory).filename() == "QtWidgets" && fs::exists(fs::path(directory) / base))
            return true;
    return name.starts_with("QtWidgets");
}

using Graph = std::map<std::string, std::set<std::string>>;

// A way from the node back to itself, or nothing.
std::vector<std::string> circleThrough(const Graph& graph, const std::string& start)
{
    std::map<std::string, std::string> reachedFrom;
    std::vector<std::string> open = {start};
    while (!open.empty()) {
        const std::string node = open.back();
        open.pop_back();
        const auto next = graph.find(node);
        if (next == graph.end())
            continue;
        for (const std::string& target : next->second) {
            if (target == start) {
                std::vector<std::string> way = {start};
                for (std::string at = node; at != start; at = reachedFrom.at(at))
                    way.insert(way.begin(), at);
                way.insert(way.begin(), start);
                return way;
            }
            if (reachedFrom.emplace(target, node).second)
                open.push_back(target);
        }
    }
    return {};
}

std::string joined(const std::vector<std::string>& way)
{
    std::string text;
    for (const std::string& node : way)
        text += (text.empty() ? "" : " -> ") + node;
    return text;
}

// Names every circle once, by the node that comes first in it.
std::vector<std::string> circlesIn(const Graph& graph)
{
    std::vector<std::string> found;
    for (const auto& [node, targets] : graph) {
        const std::vector<std::string> way = circleThrough(graph, node);
        if (!way.empty() && *std::min_element(way.begin(), way.end()) == node)
            found.push_back(joined(way));
    }
    return found;
}

// A header and the source of the same name are one.
std::string unitOf(const std::string& file)
{
    return fs::path(file).replace_extension().string();
}

// The arrows between all files that stand below the folder.
Graph unitsBelow(const std::string& folder)
{
    Graph graph;
    for (const Include& include : includes()) {
        if (!include.from.starts_with(folder + "/") || !include.target.starts_with(folder + "/"))
            continue;
        if (unitOf(include.from) != unitOf(include.target))
            graph[unitOf(include.from)].insert(unitOf(include.target));
    }
    return graph;
}

std::vector<Row> tableInDocuments()
{
    std::ifstream in(tree() / "docs/architecture.md");
    const auto trimmed = [](std::string text) {
        const std::size_t begin = text.find_first_not_of(" `");
        const std::size_t end = text.find_last_not_of(" `");
        return begin == std::string::npos ? std::string() : text.substr(begin, end - begin + 1);
    };
    std::vector<Row> rows;
    bool inside = false;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("| folder | may include |"))
            inside = true;
        else if (inside && !line.starts_with("|"))
            break;
        if (!inside || !line.starts_with("| `"))
            continue;
        std::istringstream cells(line.substr(1));
        std::string folder;
        std::string targets;
        std::string widgets;
        std::getline(cells, folder, '|');
        std::getline(cells, targets, '|');
        std::getline(cells, widgets, '|');
        Row row{trimmed(folder), {}, trimmed(widgets) == "yes"};
        std::istringstream names(targets);
        for (std::string name; std::getline(names, name, ',');)
            if (!trimmed(name).empty())
                row.mayInclude.insert(trimmed(name));
        rows.push_back(row);
    }
    return rows;
}

TEST(Architecture, KnowsWhatAWidgetsHeaderIs)
{
    EXPECT_TRUE(isWidgetsHeader("QWidget"));
    EXPECT_TRUE(isWidgetsHeader("QApplication"));
    EXPECT_TRUE(isWidgetsHeader("qwidget.h"));
    EXPECT_TRUE(isWidgetsHeader("QtWidgets/QMessageBox"));
    EXPECT_FALSE(isWidgetsHeader("QImage"));
    EXPECT_FALSE(isWidgetsHeader("QThread"));
}

TEST(Architecture, KnowsWhatAnIncludeIs)
{
    EXPECT_EQ(includedBy("#include <QWidget>"), "QWidget");
    EXPECT_EQ(includedBy("  #  include \"log/logfileutil.h\" // why"), "log/logfileutil.h");
    EXPECT_EQ(includedBy("// #include <QWidget>"), std::nullopt);
    EXPECT_EQ(includedBy("int include;"), std::nullopt);
    EXPECT_EQ(targetOf("src/ink/inkpoints.cpp", "ink/inkpoints.h"), "src/ink/inkpoints.h");
    EXPECT_EQ(targetOf("src/ink/inkpoints.cpp", "QImage"), "");
}

TEST(Architecture, FindsAndNamesACircle)
{
    const Graph graph = {{"a", {"b"}}, {"b", {"c"}}, {"c", {"a", "d"}}, {"d", {}}};
    EXPECT_EQ(circlesIn(graph), std::vector<std::string>{"a -> b -> c -> a"});
    EXPECT_TRUE(circlesIn({{"a", {"b", "c"}}, {"b", {"c"}}}).empty());
}

TEST(Architecture, EveryFolderHasARow)
{
    for (const std::string& source : sources())
        EXPECT_NE(rowOf(table(), source), nullptr) << source << " lies in a folder that no row covers";
    for (const Row& row : table()) {
        const auto covered = [&row](const std::string& source) { return rowOf(table(), source) == &row; };
        EXPECT_TRUE(std::any_of(sources().begin(), sources().end(), covered))
            << row.folder << " has a row and no file";
        for (const std::string& folder : row.mayInclude)
            EXPECT_TRUE(std::any_of(table().begin(), table().end(),
                                    [&folder](const Row& other) { return other.folder == folder; }))
                << row.folder << " may include " << folder << ", which has no row";
    }
}

TEST(Architecture, FoldersIncludeOnlyWhatTheirRowNames)
{
    for (const Include& include : includes()) {
        const Row* const from = rowOf(table(), include.from);
        const Row* const target = include.target.empty() ? nullptr : rowOf(table(), include.target);
        if (from && target && from != target) {
            EXPECT_TRUE(from->mayInclude.contains(target->folder)) << place(include);
        }
    }
}

TEST(Architecture, EveryArrowOfTheTableIsInUse)
{
    std::set<std::pair<std::string, std::string>> used;
    for (const Include& include : includes()) {
        const Row* const from = rowOf(table(), include.from);
        const Row* const target = include.target.empty() ? nullptr : rowOf(table(), include.target);
        if (from && target)
            used.emplace(from->folder, target->folder);
    }
    for (const Row& row : table())
        for (const std::string& folder : row.mayInclude)
            EXPECT_TRUE(used.contains({row.folder, folder})) << row.folder << " does not include " << folder;
}

TEST(Architecture, OnlyTheFoldersThatMayKnowWidgetsDo)
{
    for (const Include& include : includes()) {
        const Row* const row = rowOf(table(), include.from);
        if (row && !row->widgets && include.target.empty()) {
            EXPECT_FALSE(isWidgetsHeader(include.name)) << place(include);
        }
    }
}

// Only the pad on the screen is a desktop program; the driver and its tools run anywhere.
TEST(Architecture, SimulatedDriverUsesNoQt)
{
    int looked = 0;
    for (const Include& include : includes()) {
        const Row* const row = rowOf(table(), include.from);
        if (!row || row->folder != "drivers/simulator" || !include.target.empty())
            continue;
        ++looked;
        EXPECT_FALSE(include.name.starts_with("Q") || include.name.starts_with("q")) << place(include);
    }
    EXPECT_GT(looked, 0);
}

// The harness takes the library from the outside: the model table is all that it reads, and the public header
// is left to the tests of that header.
TEST(Architecture, HarnessKnowsThePublicHeaderInItsOwnTestsOnly)
{
    for (const Include& include : includes()) {
        if (include.from.starts_with("tests/host/") && include.target == "include/scriberasdk.h") {
            EXPECT_TRUE(include.from.find("linked_host_test") != std::string::npos ||
                        include.from.find("header_") != std::string::npos)
                << place(include);
        }
    }
}

TEST(Architecture, FoldersIncludeEachOtherInNoCircle)
{
    Graph graph;
    for (const Row& row : table())
        graph[row.folder] = row.mayInclude;
    EXPECT_TRUE(circlesIn(graph).empty()) << testing::PrintToString(circlesIn(graph));
}

TEST(Architecture, FilesIncludeEachOtherInNoCircle)
{
    std::set<std::string> roots;
    for (const std::string& source : sources())
        roots.insert(source.substr(0, source.find('/')));
    for (const std::string& root : roots)
        EXPECT_TRUE(circlesIn(unitsBelow(root)).empty())
            << root << ": " << testing::PrintToString(circlesIn(unitsBelow(root)));
    EXPECT_FALSE(unitsBelow("src").empty());
}

// Atomic members have the strictest order, under which a program without data races runs as its steps are
// written, on every machine. Where less is asked for, docs/threads.md says why that is enough.
TEST(Architecture, WeakerMemoryOrdersAreWhereTheDocumentsArgueThem)
{
    std::set<std::string> found;
    for (const std::string& source : sources()) {
        if (!source.starts_with("src/") && !source.starts_with("drivers/") && !source.starts_with("tools/") &&
            !source.starts_with("web/"))
            continue;
        const std::string text = fileContent((tree() / source).string());
        for (const char* order : {"memory_order", "__ATOMIC_", "_fence(", "_explicit("})
            if (text.find(order) != std::string::npos)
                found.insert(source);
    }
    const std::string documents = fileContent((tree() / "docs/threads.md").string());
    const std::size_t begin = documents.find("## Memory order");
    ASSERT_NE(begin, std::string::npos);
    const std::string section = documents.substr(begin, documents.find("\n## ", begin) - begin);
    std::set<std::string> argued;
    for (std::size_t at = section.find("\n| `"); at != std::string::npos; at = section.find("\n| `", at + 1))
        argued.insert(section.substr(at + 4, section.find('`', at + 4) - at - 4));
    EXPECT_EQ(found, argued);
}

TEST(Architecture, TheDocumentsShowThisTable)
{
    EXPECT_EQ(tableInDocuments(), table());
}

} // namespace
} // namespace scribera::test
