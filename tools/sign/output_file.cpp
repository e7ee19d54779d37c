#include "output_file.h"

#include "failures.h"
#include "interrupts.h"
#include "leftovers.h"
#include "text.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString reasonOf(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

Failure cannotWrite(const QString& path, const QString& reason)
{
    return {Text::tr("%1: cannot be written: %2").arg(path, reason)};
}

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return m_descriptor; }
    bool close() { return m_descriptor < 0 || ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor;
};

bool writeAll(int descriptor, std::string_view bytes)
{
    constexpr std::size_t block = std::size_t{1} << 22; // so that Ctrl-C is seen
    while (!bytes.empty()) {
        throwIfInterrupted();
        const ssize_t written = ::write(descriptor, bytes.data(), std::min(bytes.size(), block));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

mode_t newFileMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

mode_t modeOf(const std::string& target, OutputFile::Readers readers)
{
    struct stat older = {};
    if (readers == OutputFile::Readers::Owner)
        return S_IRUSR | S_IWUSR;
    return stat(target.c_str(), &older) == 0 ? older.st_mode & 0777 : newFileMode();
}

class InputFile
{
public:
    explicit InputFile(const QString& path)
        : m_path(path), m_file(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
        struct stat status = {};
        if (m_file.get() < 0 || fstat(m_file.get(), &status) != 0)
            throw cannotRead(reasonOf(errno));
        if (!S_ISREG(status.st_mode))
            throw cannotRead(Text::tr("it is no regular file"));
        m_size = static_cast<std::size_t>(status.st_size);
    }

    std::size_t size() const { return m_size; }
    // Into as many bytes; how many there were.
    std::size_t read(char* content) const
    {
        std::size_t size = 0;
        while (size < m_size) {
            throwIfInterrupted();
            const ssize_t count = ::read(m_file.get(), content + size, m_size - size);
            if (count < 0 && errno != EINTR)
                throw cannotRead(reasonOf(errno));
            if (count == 0)
                break;
            size += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        return size;
    }

private:
    Failure cannotRead(const QString& reason) const
    {
        return {Text::tr("%1: cannot be read: %2").arg(m_path, reason)};
    }

    const QString m_path;
    const Descriptor m_file;
    std::size_t m_size = 0;
};

} // namespace

OutputFile::OutputFile(const QString& path, const QStringList& inputs, Readers readers)
    : m_path(path), m_readers(readers)
{
    std::error_code error;
    // A name alone stays one where there is no such file yet.
    m_target = std::filesystem::weakly_canonical(
                   std::filesystem::current_path() / QFile::encodeName(path).toStdString(), error)
                   .string();
    if (error)
        throw cannotWrite(path, reasonOf(error.value()));
    const std::string folder = std::filesystem::path(m_target).parent_path().string();
    struct stat target = {};
    struct stat source = {};
    if (stat(m_target.c_str(), &target) == 0) {
        if (!S_ISREG(target.st_mode))
            throw cannotWrite(path, Text::tr("it is no regular file"));
        for (const QString& input : inputs)
            if (stat(QFile::encodeName(input).constData(), &source) == 0 && source.st_dev == target.st_dev &&
                source.st_ino == target.st_ino)
                throw cannotWrite(path, Text::tr("%1 is read, and stays as it is").arg(input));
        if (access(m_target.c_str(), W_OK) != 0)
            throw cannotWrite(path, reasonOf(errno));
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        throw cannotWrite(path, reasonOf(errno));
}

void OutputFile::write(const std::vector<std::string_view>& parts,
                       const std::function<void(const std::string& draft)>& check) const
{
    std::string draft = (std::filesystem::path(m_target).parent_path() / ".scribera-sign.XXXXXX").string();
    Descriptor file(mkostemp(draft.data(), O_CLOEXEC));
    if (file.get() < 0)
        throw cannotWrite(m_path, reasonOf(errno));
    const Leftover leftover(draft);
    const bool isWritten = std::all_of(parts.begin(), parts.end(),
                                       [&](std::string_view part) { return writeAll(file.get(), part); }) &&
                           fchmod(file.get(), modeOf(m_target, m_readers)) == 0 && fsync(file.get()) == 0 &&
                           file.close();
    if (!isWritten)
        throw cannotWrite(m_path, reasonOf(errno));
    check(draft);
    throwIfInterrupted();
    if (rename(draft.c_str(), m_target.c_str()) != 0)
        throw cannotWrite(m_path, reasonOf(errno));
}

std::string readDocument(const QString& path)
{
    const InputFile file(path);
    std::string content(file.size(), '\0');
    content.resize(file.read(content.data()));
    return content;
}

sign::Secret readSecret(const QString& path)
{
    const InputFile file(path);
    sign::Secret content(file.size());
    file.read(content.data());
    return content;
}
