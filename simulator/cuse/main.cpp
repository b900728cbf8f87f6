// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim-cuse: the simulated unit as real character devices. It needs root and a kernel with CUSE, so it runs inside
// the guest of tests/system; programs there use real devices and need no preload library.

#include "simulator/cuse/CuseDevice.h"
#include "simulator/cuse/HostedUnit.h"
#include "simulator/cuse/SerialPeer.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace hxsim;

struct Options {
    std::string description;
    std::string serialPort;
};

/// `hx-sim-cuse [--description FILE] [--serial PORT]`
bool parse(int argc, char** argv, Options& options)
{
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--description")
            options.description = argv[i + 1];
        else if (name == "--serial")
            options.serialPort = argv[i + 1];
        else
            return false;
    }
    return argc % 2 == 1;
}

std::string contentsOf(const std::string& path)
{
    std::ifstream file{path};
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// Attribute files are given as plain files with the text they have now.
void writeTextFile(HostedUnit& host, const Node& node)
{
    std::filesystem::create_directories(std::filesystem::path{node.path()}.parent_path());
    std::ofstream{node.path()} << host.textOf(node.path());
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!parse(argc, argv, options)) {
        std::fputs("usage: hx-sim-cuse [--description FILE] [--serial PORT]\n", stderr);
        return 2;
    }

    // Blocked before any thread starts, so that the wait below is the only one to see them.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);

    HostedUnit host;
    if (!options.description.empty())
        host.describe(contentsOf(options.description));

    std::vector<std::unique_ptr<CuseDevice>> devices;
    std::unique_ptr<SerialPeer> serial;
    for (const auto& [path, node] : host.nodes()) {
        if (!node.present)
            continue;
        if (node.isText())
            writeTextFile(host, node);
        else if (!node.isSerial())
            devices.push_back(std::make_unique<CuseDevice>(host, path));
        else if (!options.serialPort.empty())
            serial = std::make_unique<SerialPeer>(host, path, options.serialPort);
    }
    std::printf("%zu devices\n", devices.size());
    std::fflush(stdout);

    int received = 0;
    sigwait(&ending, &received);
    std::_Exit(0); // the sessions' threads are in blocking reads; the kernel removes the devices
}
