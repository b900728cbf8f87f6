// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/file/ModelCalls.h"

#include <cerrno>

namespace hxsim {

Calls::Opened ModelCalls::open(Caller /*caller*/, Node& node, int flags)
{
    if (!node.present)
        return {nullptr, ENOENT};
    const int error = node.openError ? node.openError() : 0;
    return {error == 0 ? node.open(flags) : nullptr, error};
}

std::optional<Node::Shape> ModelCalls::shape(const OpenFile& file, std::uint32_t code)
{
    const Node::Shape* const shape = file.node.shape(code);
    return shape == nullptr ? std::nullopt : std::optional{*shape};
}

bool ModelCalls::present(const std::string& path)
{
    const Node* const node = unit_.findNode(path);
    return node != nullptr ? node->present : !unit_.isAbsent(path);
}

} // namespace hxsim
