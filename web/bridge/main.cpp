// scribera-bridge: lets pages in a browser take signatures from the pads of this machine.
#include "http.h"
#include "log.h"
#include "service.h"

#include <boost/asio/io_context.hpp>

#include <csignal>
#include <cstdio>
#include <exception>

#include <sys/resource.h>

namespace {

int serve(const bridge::Options& options)
{
    boost::asio::io_context context(1);
    bridge::Service service(context, options, bridge::serveHttp);
    service.listen();
    if (std::printf("%s\n", service.address().c_str()) < 0 || std::fflush(stdout) != 0) {
        bridge::log("standard output cannot be written");
        return 1;
    }
    context.run();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    // A core file would hold signatures.
    const rlimit none = {};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return serve(bridge::readOptions(argc, argv));
    } catch (const bridge::Printed& printed) {
        return std::fputs(printed.text.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
    } catch (const bridge::OptionFault& fault) {
        bridge::log(fault.reason + (fault.exitCode == 2 ? "\nTry 'scribera-bridge --help'." : ""));
        return fault.exitCode;
    } catch (const std::exception& error) {
        bridge::log(error.what());
        return 1;
    }
}
