#include "library.h"

#include <atomic>
#include <stdexcept>

#include <dlfcn.h>

namespace scribera::test {

bool belongsTo(Families families, const PadModel& model)
{
    switch (families) {
    case Families::WithScreen:
        return model.hasScreen;
    case Families::WithFingerprint:
        return model.hasFingerprint;
    case Families::All:
        break;
    }
    return true;
}

std::vector<std::string> operationNames(const PadModel& model)
{
    std::vector<std::string> names;
#define X(name, families, result, arguments)                                                                 \
    if (belongsTo(Families::families, model))                                                                \
        names.push_back(#name);
    SCRIBERA_OPERATIONS(X)
#undef X
    return names;
}

std::vector<std::string> extensionNames()
{
    return {
#define X(name, result, arguments) "SCRX_" #name,
        SCRIBERA_EXTENSIONS(X)
#undef X
    };
}

namespace {

void* openLibrary(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        throw std::runtime_error(dlerror());
    return handle;
}

template <class T>
T& global(void* handle, const char* name)
{
    void* address = dlsym(handle, name);
    if (!address)
        throw std::runtime_error(std::string("no global ") + name);
    return *static_cast<T*>(address);
}

} // namespace

Library::Library(void* handle)
    : enableLog(global<unsigned char>(handle, "g_bEnableLog")),
      useSignObj(global<unsigned char>(handle, "g_bUseSignObj")),
      signWidget(global<void*>(handle, "g_pSignWidget")), m_handle(handle)
{
    for (const PadModel& model : padModels()) {
        Operations operations;
#define X(name, families, result, arguments)                                                                 \
    if (belongsTo(Families::families, model)) {                                                              \
        operations.name = reinterpret_cast<result(*) arguments>(symbol(std::string(model.prefix) + #name));  \
        if (!operations.name)                                                                                \
            throw std::runtime_error(std::string("no function ") + model.prefix + #name);                    \
    }
        SCRIBERA_OPERATIONS(X)
#undef X
        m_families.push_back(operations);
    }
#define X(name, result, arguments)                                                                           \
    m_extensions.name = reinterpret_cast<result(*) arguments>(symbol("SCRX_" #name));                        \
    if (!m_extensions.name)                                                                                  \
        throw std::runtime_error("no function SCRX_" #name);
    SCRIBERA_EXTENSIONS(X)
#undef X
}

Library& Library::instance()
{
    static Library library(openLibrary(SCRIBERA_SDK_LIBRARY));
    return library;
}

const Operations& Library::family(const PadModel& model) const
{
    return m_families.at(static_cast<std::size_t>(&model - padModels().data()));
}

void* Library::symbol(const std::string& name) const
{
    return dlsym(m_handle, name.c_str());
}

void setLogging(bool on, unsigned char value)
{
    std::atomic_ref(Library::instance().enableLog).store(on ? value : 0);
}

bool loggingIsOn()
{
    return std::atomic_ref(Library::instance().enableLog).load() != 0;
}

} // namespace scribera::test
