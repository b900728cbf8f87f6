// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/file/UnitCalls.h"

#include "simulator/file/Terminal.h"

#include <cerrno>

namespace hxsim {

Calls::Opened UnitCalls::open(Caller caller, const std::string& path, int flags)
{
    Node* const node = unit_.findNode(path);
    return node == nullptr ? Opened{nullptr, ENOENT} : open(caller, *node, flags);
}

Calls::Opened UnitCalls::open(Caller caller, Node& node, int flags)
{
    Opened opened = ForwardedCalls::open(caller, node, flags);
    if (opened.file != nullptr && node.openings++ == 0)
        node.terminal.clear();
    return opened;
}

void UnitCalls::close(Caller caller, OpenFile& file, Closing closing)
{
    ForwardedCalls::close(caller, file, closing);
    --file.node.openings;
}

void UnitCalls::decorate(std::unique_ptr<Calls> decorator)
{
    decorator_ = std::move(decorator);
    forwardTo(decorator_ != nullptr ? *decorator_ : journaled_);
}

bool UnitCalls::setTerminal(OpenFile& file, Bytes settings)
{
    const std::optional<termios> terminal = terminalFrom(settings);
    if (!terminal || !file.node.isSerial())
        return false;
    file.node.terminal.assign(settings.begin(), settings.end());
    setLine(file, lineOf(*terminal));
    return true;
}

} // namespace hxsim
