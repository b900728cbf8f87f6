// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/VideoChannels.h"

#include <algorithm>

namespace hxaux {

unsigned char channelsOf(Call& call, const std::string& name)
{
    const std::string& text = call.text(name);
    if (text == "none")
        return 0;
    if (text == "all")
        return 15;
    unsigned bits = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const auto number = toInteger(text.substr(begin, end - begin));
        if (!number || *number < 1 || *number > 4)
            call.fail(Exit::Usage, std::string{name}.append(": '").append(text).append(
                                       "' is not a list of channels 1 to 4, 'all' or 'none'"));
        bits |= 1U << (*number - 1);
        begin = end + 1;
    }
    return static_cast<unsigned char>(bits);
}

Value listOfChannels(unsigned char bits)
{
    Value::List numbers;
    for (int i = 0; i < 8; ++i)
        if ((bits >> i & 1) != 0)
            numbers.emplace_back(i + 1);
    return numbers;
}

} // namespace hxaux
