// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

#include <memory>

namespace conformance {

using namespace Halvix;

namespace {

/// One object for all checks: its creation reads both EEPROMs, which takes a second on a real bus.
using SharedAbout = std::shared_ptr<About>;

SharedAbout makeAbout()
{
    return {GetAbout(), [](About* about) { about->Release(); }};
}

/// The text depends on the unit's production data; its presence and the required size do not.
Check text(const SharedAbout& about, const char* operation, eErr (About::*getter)(char*, int))
{
    return {operation, "0 present; 6 in a buffer of none", [=] {
                std::array<char, 256> value{};
                const eErr fits = ((*about).*getter)(value.data(), 254);
                const std::string found = value[0] != '\0' ? " present" : " empty";
                const eErr tooSmall = ((*about).*getter)(value.data(), 0);
                return answer(fits) + found + "; " + answer(tooSmall) + " in a buffer of none";
            }};
}

template <class Value>
Check value(const SharedAbout& about, const char* operation, eErr (About::*getter)(Value*), const char* expected)
{
    return {operation, expected, [=] {
                Value got{};
                const eErr err = ((*about).*getter)(&got);
                return answer(err, got);
            }};
}

Checks aboutTheUnit()
{
    const SharedAbout about = makeAbout();
    return {
        text(about, "About.getMainPCBSerial", &About::getMainPCBSerial),
        text(about, "About.getUnitSerial", &About::getUnitSerial),
        text(about, "About.getMainPCBArt", &About::getMainPCBArt),
        text(about, "About.getMainManufacturingDate", &About::getMainManufacturingDate),
        text(about, "About.getMainHWversion", &About::getMainHWversion),
        text(about, "About.getMainProdRev", &About::getMainProdRev),
        text(about, "About.getMainProdArtNr", &About::getMainProdArtNr),
        value(about, "About.getNrOfETHConnections", &About::getNrOfETHConnections, "0 2"),
        value(about, "About.getNrOfCANConnections", &About::getNrOfCANConnections, "0 4"),
        value(about, "About.getNrOfVideoConnections", &About::getNrOfVideoConnections, "0 2"),
        value(about, "About.getNrOfUSBConnections", &About::getNrOfUSBConnections, "0 3"),
        value(about, "About.getNrOfSerialConnections", &About::getNrOfSerialConnections, "0 1"),
        text(about, "About.getAddOnPCBSerial", &About::getAddOnPCBSerial),
        text(about, "About.getAddOnPCBArt", &About::getAddOnPCBArt),
        text(about, "About.getAddOnManufacturingDate", &About::getAddOnManufacturingDate),
        text(about, "About.getAddOnHWversion", &About::getAddOnHWversion),
        value(about, "About.getIsWLANMounted", &About::getIsWLANMounted, "0 1"),
        value(about, "About.getIsGPSMounted", &About::getIsGPSMounted, "0 1"),
        value(about, "About.getIsGPRSMounted", &About::getIsGPRSMounted, "0 1"),
        value(about, "About.getIsBTMounted", &About::getIsBTMounted, "0 1"),
    };
}

Checks service()
{
    return {
        {"HXAuxPrivate.getEepromProperty", "0 4",
         [] {
             Held service{GetHXAuxPrivate()};
             std::array<char, 16> value{};
             std::array<char, 4> key{"CAN"};
             const eErr err = service->getEepromProperty(0, key.data(), value.data(), 15);
             return answer(err) + " " + value.data();
         }},
        {"HXAuxPrivate.setEepromProperty", "0 0 7",
         [] {
             Held service{GetHXAuxPrivate()};
             std::array<char, 16> value{};
             std::array<char, 9> key{"PROD_REV"};
             std::array<char, 2> seven{"7"};
             const eErr set = service->setEepromProperty(0, key.data(), seven.data());
             const eErr got = service->getEepromProperty(0, key.data(), value.data(), 15);
             return answer(set) + " " + answer(got) + " " + value.data();
         }},
        {"HXAuxPrivate.setFileSetting", "0 0 blue",
         [] {
             Held service{GetHXAuxPrivate()};
             std::array<char, 16> value{};
             const eErr set = service->setFileSetting("Conformance", "blue");
             const eErr got = service->getFileSetting("Conformance", value.data(), 15);
             return answer(set) + " " + answer(got) + " " + value.data();
         }},
        {"HXAuxPrivate.setToSmart", "0 0 4660",
         [] {
             Held service{GetHXAuxPrivate()};
             unsigned short value = 0;
             const eErr set = service->setToSmart(3, 0x1234);
             const eErr got = service->getFromSmart(3, &value);
             return answer(set) + " " + answer(got, value);
         }},
        {"HXAuxPrivate.resumeVideo", "7",
         [] {
             Held service{GetHXAuxPrivate()};
             return answer(service->resumeVideo());
         }},
    };
}

} // namespace

Checks unitInformation()
{
    Checks all = aboutTheUnit();
    for (Check& check : service())
        all.push_back(std::move(check));
    return all;
}

} // namespace conformance
