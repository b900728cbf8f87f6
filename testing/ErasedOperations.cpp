// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/ErasedOperations.h"

#include "testing/EveryOperation.h"

#include <map>

namespace every {

namespace {

template <class Interface>
std::vector<ErasedOperation> erased()
{
    std::vector<ErasedOperation> all;
    Operations<Interface>::visit([&](const char* name, auto operation) {
        all.push_back({name, [operation](void* object, faults::Arguments& arguments) {
                           return arguments.call(*static_cast<Interface*>(object), operation);
                       }});
    });
    return all;
}

} // namespace

const std::vector<ErasedOperation>& operationsOf(const std::string& interface)
{
    static const auto kAll = [] {
        std::map<std::string, std::vector<ErasedOperation>> all;
        forEachInterface([&]<class Interface>() { all[Operations<Interface>::kName] = erased<Interface>(); });
        return all;
    }();
    return kAll.at(interface);
}

} // namespace every
