// The built driver, called as the library calls it, without the library.
#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace scribera::test {

struct PadSample
{
    int x;
    int y;
    int pressure;
    int status;

    bool operator==(const PadSample&) const = default;
};
void PrintTo(const PadSample& sample, std::ostream* out);

void installPenDriver(); // as ./libscriberadrv.so

class PenDriver
{
public:
    using PenCallback = void (*)(int, int, int, int);

    PenDriver(); // loads ./libscriberadrv.so
    ~PenDriver();
    PenDriver(const PenDriver&) = delete;
    PenDriver& operator=(const PenDriver&) = delete;

    // With a callback that keeps what comes.
    int start(int deviceType);
    std::vector<PadSample> samples() const;

    bool unload(); // whether it is gone then

    int (*Initial)(int, PenCallback, void*);
    int (*UnInitial)();
    int (*OpenDeviceLCD)(bool);
    int (*ClearDeviceContent)();
    int (*GetDevicePenID)(char*, int);
    int (*GetDevicePadID)(char*, int);
    int (*GetDeviceSecureID)(char*, int);
    int (*GetDevicePartsVersion)(char*, int);
    int (*ShowVersionInfoOnDevice)(bool);
    int (*SetDevicePenStyle)(bool);
    int (*ShowFPImageOnDevice)(unsigned char*, int, int, int, bool*);

private:
    void* m_handle;
};

// What is written to standard error from now on.
class ErrorOutput
{
public:
    ErrorOutput();
    ~ErrorOutput();
    ErrorOutput(const ErrorOutput&) = delete;
    ErrorOutput& operator=(const ErrorOutput&) = delete;
    std::string text() const;

private:
    const int m_before;
};

} // namespace scribera::test
