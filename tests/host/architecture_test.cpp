// Who may include whom in the tree.

#include <fstream>
#include <optional>
#include <set>
#include <sstream>

#include "harness.h"

namespace scribera::test {
namespace {

namespace fs = std::filesystem;

struct Include
{
    std::string from; // relative to the tree
    int line;
    std::string name; // as written
};

bool isSource(const fs::path& path)
{
    static const std::set<std::string> endings = {".h", ".hpp", ".c", ".cpp", ".cc", ".inl", ".in"};
    return endings.contains(path.extension());
}

std::vector<fs::path> sourcesIn(const std::string& folder)
{
    std::vector<fs::path> sources;
    const fs::path root = fs::path(sourceDirectory()) / folder;
    if (!fs::is_directory(root))
        return sources;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        if (entry.is_regular_file() && isSource(entry.path()))
            sources.push_back(entry.path());
    }
    return sources;
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

std::vector<Include> includesOf(const std::string& folder)
{
    std::vector<Include> includes;
    for (const fs::path& source : sourcesIn(folder)) {
        std::ifstream in(source);
        int number = 0;
        for (std::string line; std::getline(in, line);) {
            ++number;
            if (const std::optional<std::string> name = includedBy(line))
                includes.push_back({fs::relative(source, sourceDirectory()).string(), number, *name});
        }
    }
    return includes;
}

void PrintTo(const Include& include, std::ostream* out)
{
    *out << include.from << ":" << include.line << ": " << include.name;
}

std::string fileName(const Include& include)
{
    return fs::path(include.name).filename();
}

// The folders of the library itself, from the outside to the inside.
const std::vector<std::string> libraryFolders = {
    "sdk", "signwidget", "signobj", "fingerprint", "threads", "signcore", "ink", "sync", "log"};

std::set<std::string> headersIn(const std::vector<std::string>& folders)
{
    std::set<std::string> names;
    for (const std::string& folder : folders) {
        for (const fs::path& source : sourcesIn(folder))
            names.insert(source.filename());
    }
    return names;
}

bool isWidgetsHeader(const std::string& name)
{
    const std::string base = fs::path(name).filename();
    std::istringstream directories(SCRIBERA_QTWIDGETS_HEADERS);
    for (std::string directory; std::getline(directories, directory, ':');) {
        if (fs::path(directory).filename() == "QtWidgets" && fs::exists(fs::path(directory) / base))
            return true;
    }
    return name.starts_with("QtWidgets");
}

void expectNone(const std::string& folder, const std::set<std::string>& forbidden)
{
    for (const Include& include : includesOf(folder))
        EXPECT_FALSE(forbidden.contains(fileName(include))) << testing::PrintToString(include);
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
    EXPECT_EQ(includesOf("tests/host").empty(), false);
}

TEST(Architecture, CoreAndLogKnowNoWidgets)
{
    for (const char* folder : {"signcore", "ink", "sync", "log"}) {
        for (const Include& include : includesOf(folder))
            EXPECT_FALSE(isWidgetsHeader(include.name)) << testing::PrintToString(include);
    }
    EXPECT_FALSE(sourcesIn("signcore").empty());
    EXPECT_FALSE(sourcesIn("log").empty());
}

TEST(Architecture, CoreAndLogDoNotReachOutwards)
{
    const std::set<std::string> outer = headersIn({"sdk", "signwidget", "signobj"});
    ASSERT_FALSE(outer.empty());
    for (const char* folder : {"signcore", "ink", "sync", "log"})
        expectNone(folder, outer);
    expectNone("log", headersIn({"signcore", "threads", "fingerprint"}));
}

TEST(Architecture, WidgetAndWindowlessClassesDoNotKnowEachOtherNorTheExportedLayer)
{
    expectNone("signobj", headersIn({"signwidget", "sdk"}));
    expectNone("signwidget", headersIn({"signobj", "sdk"}));
}

TEST(Architecture, ExamplesUseThePublicHeaderOnly)
{
    expectNone("examples", headersIn(libraryFolders));
    EXPECT_FALSE(sourcesIn("examples").empty());
}

// The tools read, write and draw points with the library's own code, but have no sign object.
TEST(Architecture, ToolsUseNoSignObjectNorTheExportedLayer)
{
    expectNone("tools", headersIn({"sdk", "signwidget", "signobj", "threads", "fingerprint", "gui"}));
    expectNone("tools", {"signobject.h", "liveobject.h", "scriberadriver.h", "drivercallbacks.h"});
    EXPECT_FALSE(sourcesIn("tools").empty());
}

TEST(Architecture, SimulatorUsesNothingOfTheLibrary)
{
    std::set<std::string> inner = headersIn(libraryFolders);
    inner.insert("scriberasdk.h");
    expectNone("simulator", inner);
    EXPECT_FALSE(sourcesIn("simulator").empty());
}

// Only the pad on the screen is a desktop program; the driver and its tools run anywhere.
TEST(Architecture, SimulatedDriverUsesNoQt)
{
    int looked = 0;
    for (const Include& include : includesOf("simulator")) {
        if (include.from.starts_with("simulator/virtualpad/"))
            continue;
        ++looked;
        EXPECT_FALSE(fileName(include).starts_with("Q") || fileName(include).starts_with("q"))
            << testing::PrintToString(include);
    }
    EXPECT_GT(looked, 0);
}

TEST(Architecture, HarnessUsesNothingOfTheLibrary)
{
    const std::set<std::string> inner = headersIn(libraryFolders);
    for (const Include& include : includesOf("tests/host")) {
        EXPECT_FALSE(inner.contains(fileName(include))) << testing::PrintToString(include);
        if (fileName(include) == "scriberasdk.h") {
            EXPECT_TRUE(include.from.find("linked_host_test") != std::string::npos ||
                        include.from.find("header_") != std::string::npos)
                << testing::PrintToString(include);
        }
    }
}

} // namespace
} // namespace scribera::test
