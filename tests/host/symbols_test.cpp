// The built library as a file: what it exports, its name, and how it may be linked.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>

#include <elf.h>

#include "harness.h"

namespace scribera::test {
namespace {

struct Symbol
{
    std::string name;
    int type;
    int visibility;
    std::size_t size;
};

// The part of an ELF file that a linker reads.
class ElfFile
{
public:
    explicit ElfFile(const std::string& path) : m_content(fileContent(path))
    {
        const auto* header = at<Elf64_Ehdr>(0);
        if (std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0)
            throw std::runtime_error(path + " is no ELF file");
        const auto* segments = at<Elf64_Phdr>(header->e_phoff);
        for (int i = 0; i < header->e_phnum; ++i)
            m_segments.push_back(segments[i]);
        const auto* sections = at<Elf64_Shdr>(header->e_shoff);
        for (int i = 0; i < header->e_shnum; ++i) {
            const Elf64_Shdr& section = sections[i];
            if (section.sh_type == SHT_DYNSYM)
                readSymbols(section, sections[section.sh_link]);
            if (section.sh_type == SHT_DYNAMIC)
                readDynamic(section, sections[section.sh_link]);
        }
    }

    const std::vector<Symbol>& defined() const { return m_defined; }
    std::set<std::string> names(bool variables) const // defined ones, else of functions
    {
        std::set<std::string> found;
        for (const Symbol& symbol : m_defined) {
            if ((symbol.type == STT_OBJECT) == variables)
                found.insert(symbol.name);
        }
        return found;
    }
    const std::set<std::string>& undefined() const { return m_undefined; }
    const Elf64_Phdr* segment(Elf64_Word type) const // null when there is none
    {
        const auto found = std::find_if(m_segments.begin(), m_segments.end(),
                                        [=](const Elf64_Phdr& each) { return each.p_type == type; });
        return found == m_segments.end() ? nullptr : &*found;
    }
    const std::vector<std::string>& needed() const { return m_needed; }
    const std::string& soname() const { return m_soname; }
    bool has(Elf64_Sxword tag) const { return m_tags.contains(tag); }
    std::uint64_t value(Elf64_Sxword tag) const { return has(tag) ? m_tags.at(tag) : 0; }

private:
    template <class T>
    const T* at(std::size_t offset) const
    {
        if (offset + sizeof(T) > m_content.size())
            throw std::runtime_error("ELF file cut short");
        return reinterpret_cast<const T*>(m_content.data() + offset);
    }

    std::string text(const Elf64_Shdr& strings, std::size_t offset) const
    {
        return m_content.data() + strings.sh_offset + offset;
    }

    void readSymbols(const Elf64_Shdr& section, const Elf64_Shdr& strings)
    {
        for (std::size_t i = 0; i < section.sh_size / sizeof(Elf64_Sym); ++i) {
            const auto* symbol = at<Elf64_Sym>(section.sh_offset + i * sizeof(Elf64_Sym));
            if (symbol->st_shndx == SHN_UNDEF)
                m_undefined.insert(text(strings, symbol->st_name));
            if (symbol->st_shndx == SHN_UNDEF || ELF64_ST_BIND(symbol->st_info) == STB_LOCAL)
                continue;
            m_defined.push_back({text(strings, symbol->st_name), ELF64_ST_TYPE(symbol->st_info),
                                 ELF64_ST_VISIBILITY(symbol->st_other), symbol->st_size});
        }
    }

    void readDynamic(const Elf64_Shdr& section, const Elf64_Shdr& strings)
    {
        for (std::size_t i = 0; i < section.sh_size / sizeof(Elf64_Dyn); ++i) {
            const auto* entry = at<Elf64_Dyn>(section.sh_offset + i * sizeof(Elf64_Dyn));
            if (entry->d_tag == DT_SONAME)
                m_soname = text(strings, entry->d_un.d_val);
            else if (entry->d_tag == DT_NEEDED)
                m_needed.push_back(text(strings, entry->d_un.d_val));
            m_tags[entry->d_tag] = entry->d_un.d_val;
        }
    }

    std::string m_content;
    std::vector<Elf64_Phdr> m_segments;
    std::vector<Symbol> m_defined;
    std::set<std::string> m_undefined;
    std::vector<std::string> m_needed;
    std::string m_soname;
    std::map<Elf64_Sxword, std::uint64_t> m_tags;
};

std::set<std::string> documentedFunctions()
{
    std::set<std::string> names;
    for (const PadModel& model : padModels()) {
        for (const std::string& operation : operationNames(model))
            names.insert(model.prefix + operation);
    }
    for (const std::string& extension : extensionNames())
        names.insert(extension);
    return names;
}

const std::map<std::string, std::size_t> sizesOfGlobals = {
    {"g_bEnableLog", 1},         {"g_bUseSignObj", 1},          {"g_cKeyBuf", 256},
    {"g_cKeyBuf_InThread", 256}, {"g_wszKeyBuf", 1024},         {"g_cValueBuf", 256},
    {"g_pSignWidget", 8},        {"g_cValueBuf_InThread", 256}, {"g_wszValueBuf", 1024}};

std::set<std::string> documentedGlobals()
{
    std::set<std::string> names;
    for (const auto& [name, size] : sizesOfGlobals)
        names.insert(name);
    return names;
}

// Differences only; hundreds of equal names help nobody.
void expectSameNames(const std::set<std::string>& found, const std::set<std::string>& wanted)
{
    std::set<std::string> missing;
    std::set<std::string> extra;
    std::set_difference(wanted.begin(), wanted.end(), found.begin(), found.end(),
                        std::inserter(missing, missing.end()));
    std::set_difference(found.begin(), found.end(), wanted.begin(), wanted.end(),
                        std::inserter(extra, extra.end()));
    EXPECT_EQ(missing, std::set<std::string>());
    EXPECT_EQ(extra, std::set<std::string>());
}

TEST(Symbols, FunctionsAreExactlyTheDocumentedOnes)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    for (const PadModel& model : padModels())
        ASSERT_EQ(operationNames(model).size(),
                  31u + (model.hasScreen ? 3 : 0) + (model.hasFingerprint ? 4 : 0));
    ASSERT_EQ(extensionNames().size(), 3u);
    expectSameNames(library.names(false), documentedFunctions());
}

TEST(Symbols, VariablesAreExactlyTheDocumentedOnes)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    ASSERT_EQ(documentedGlobals().size(), 9u);
    expectSameNames(library.names(true), documentedGlobals());
}

TEST(Symbols, VariablesHaveTheirSizesAndAreZeroAtLoad)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    for (const Symbol& symbol : library.defined()) {
        if (symbol.type != STT_OBJECT)
            continue;
        ASSERT_TRUE(sizesOfGlobals.contains(symbol.name)) << symbol.name;
        EXPECT_EQ(symbol.size, sizesOfGlobals.at(symbol.name)) << symbol.name;
        const auto* bytes = static_cast<const char*>(Library::instance().symbol(symbol.name));
        ASSERT_NE(bytes, nullptr) << symbol.name;
        for (std::size_t i = 0; i < sizesOfGlobals.at(symbol.name); ++i)
            ASSERT_EQ(bytes[i], 0) << symbol.name << " at " << i;
    }
}

TEST(Symbols, VariablesCanBeTakenOverByALinkedHost)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    for (const Symbol& symbol : library.defined())
        EXPECT_EQ(symbol.visibility, STV_DEFAULT) << symbol.name;
    EXPECT_FALSE(library.has(DT_SYMBOLIC));
    EXPECT_EQ(library.value(DT_FLAGS) & DF_SYMBOLIC, 0u);
}

TEST(Symbols, LibraryHasItsNameAndStaysLoaded)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    EXPECT_EQ(library.soname(), QT_VERSION_MAJOR == 5 ? "libscriberasdk.so.1" : "libscriberasdk-qt6.so.1");
    EXPECT_NE(library.value(DT_FLAGS_1) & DF_1_NODELETE, 0u);
    for (const std::string& needed : library.needed())
        EXPECT_EQ(needed.find("scriberadrv"), std::string::npos) << "the driver is loaded, not linked";
}

TEST(Hardening, TablesAreReadOnlyOnceTheLibraryIsLoaded)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    ASSERT_NE(library.segment(PT_GNU_RELRO), nullptr);
    EXPECT_GT(library.segment(PT_GNU_RELRO)->p_memsz, 0u);
    EXPECT_TRUE((library.value(DT_FLAGS) & DF_BIND_NOW) != 0 || (library.value(DT_FLAGS_1) & DF_1_NOW) != 0);
    EXPECT_FALSE(library.has(DT_TEXTREL));
    EXPECT_EQ(library.value(DT_FLAGS) & DF_TEXTREL, 0u);
}

TEST(Hardening, StackIsNotRun)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    ASSERT_NE(library.segment(PT_GNU_STACK), nullptr);
    EXPECT_EQ(library.segment(PT_GNU_STACK)->p_flags & PF_X, 0u);
}

TEST(Hardening, LoadedFromNowhereButTheSystem)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    EXPECT_FALSE(library.has(DT_RPATH));
    EXPECT_FALSE(library.has(DT_RUNPATH));
}

#ifdef SCRIBERA_HARDENED // the builds that are shipped; sanitizers guard more, and debugging wants plain
                         // frames
TEST(Hardening, FramesAndBuffersAreGuarded)
{
    const ElfFile library(SCRIBERA_SDK_LIBRARY);
    EXPECT_TRUE(library.undefined().contains("__stack_chk_fail"));
    for (const char* checked : {"__snprintf_chk", "__vsnprintf_chk", "__vswprintf_chk"})
        EXPECT_TRUE(library.undefined().contains(checked)) << checked;
    for (const char* unchecked : {"snprintf", "vsnprintf", "vswprintf", "sprintf", "strcpy", "strcat"})
        EXPECT_FALSE(library.undefined().contains(unchecked)) << unchecked;
}
#endif

std::string withoutComments(const std::string& source)
{
    std::string code;
    for (std::size_t i = 0; i < source.size(); ++i) {
        if (source.compare(i, 2, "/*") == 0) {
            i = source.find("*/", i + 2) + 1;
            code += ' ';
        } else if (source.compare(i, 2, "//") == 0) {
            i = source.find('\n', i);
            code += '\n';
        } else {
            code += source[i];
        }
    }
    return code;
}

std::vector<std::string> wordsOf(const std::string& code)
{
    std::vector<std::string> words(1);
    for (const char c : code) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_')
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    }
    return words;
}

TEST(Symbols, HeadersDeclareExactlyTheExportedNames)
{
    std::string header;
    for (const char* name : {"scriberasdk.h", "scriberasdk_ext.h"}) {
        const std::string content = fileContent(std::string(SCRIBERA_SOURCE_DIR "/include/") + name);
        ASSERT_FALSE(content.empty()) << name;
        header += withoutComments(content);
    }

    std::set<std::string> functions;
    std::set<std::string> variables;
    for (const std::string& word : wordsOf(header)) {
        if (word.starts_with("g_"))
            variables.insert(word);
        // Functions of this prefix have small letters, constants and macros none.
        if (word.starts_with("SCRX_") && std::any_of(word.begin(), word.end(), islower))
            functions.insert(word);
        for (const PadModel& model : padModels()) {
            const bool deviceType = word == model.deviceName; // the one name of this form that is a number
            if (word.starts_with(model.prefix) && !deviceType)
                functions.insert(word);
        }
    }
    expectSameNames(functions, documentedFunctions());
    expectSameNames(variables, documentedGlobals());
}

} // namespace
} // namespace scribera::test
