// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"
#include "testing/OrderedCall.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace faults {

/// Arguments for any operation: each pointer gets its own storage, each number the next of those passed, then 1, each
/// text the next of those passed.
class Arguments {
public:
    Arguments(const std::vector<double>& numbers, const std::vector<const char*>& texts)
        : numbers_{numbers}, texts_{texts}
    {
    }

    template <class Interface, class... Parameters>
    Halvix::eErr call(Interface& object, Halvix::eErr (Interface::*operation)(Parameters...))
    {
        return OrderedCall{object, operation, next<Parameters>()...}.result;
    }

private:
    static constexpr std::size_t kRoom = 512;

    template <class Parameter>
    Parameter next()
    {
        if constexpr (std::is_pointer_v<Parameter>) {
            char* const room = rooms_[room_++];
            if constexpr (sizeof(std::remove_pointer_t<Parameter>) == 1 && !std::is_same_v<Parameter, bool*> &&
                          !std::is_same_v<Parameter, unsigned char*>) {
                const char* const text = text_ < texts_.size() ? texts_[text_++] : "KEY";
                if (text == nullptr)
                    return nullptr;
                std::strncpy(room, text, kRoom - 1);
            }
            return reinterpret_cast<Parameter>(room);
        } else {
            const double usual = std::is_same_v<Parameter, int> ? 200 : 1;
            return static_cast<Parameter>(number_ < numbers_.size() ? numbers_[number_++] : usual);
        }
    }

    const std::vector<double>& numbers_;
    const std::vector<const char*>& texts_;
    std::size_t number_ = 0;
    std::size_t text_ = 0;
    std::size_t room_ = 0;
    alignas(16) char rooms_[6][kRoom] = {};
};

} // namespace faults
