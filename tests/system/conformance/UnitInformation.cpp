// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

using namespace Halvix;

namespace {

/// The text itself depends on the unit's production data; that it is there, and what size it needs, does not.
Check text(const char* operation, eErr (About::*getter)(char*, int))
{
    return {operation, "0 present; 6 in a room of none", [getter] {
                Held about{GetAbout()};
                std::array<char, 256> value{};
                const eErr fits = ((*about).*getter)(value.data(), 254);
                const std::string found = value[0] != '\0' ? " present" : " empty";
                const eErr tooSmall = ((*about).*getter)(value.data(), 0);
                return answer(fits) + found + "; " + answer(tooSmall) + " in a room of none";
            }};
}

} // namespace

Checks unitInformation()
{
    return {
        text("About.getMainPCBSerial", &About::getMainPCBSerial),
        text("About.getUnitSerial", &About::getUnitSerial),
        text("About.getMainPCBArt", &About::getMainPCBArt),
        text("About.getMainManufacturingDate", &About::getMainManufacturingDate),
        text("About.getMainHWversion", &About::getMainHWversion),
        text("About.getMainProdRev", &About::getMainProdRev),
        text("About.getMainProdArtNr", &About::getMainProdArtNr),
        gets("About.getNrOfETHConnections", GetAbout, &About::getNrOfETHConnections, "0 2"),
        gets("About.getNrOfCANConnections", GetAbout, &About::getNrOfCANConnections, "0 4"),
        gets("About.getNrOfVideoConnections", GetAbout, &About::getNrOfVideoConnections, "0 4"),
        gets("About.getNrOfUSBConnections", GetAbout, &About::getNrOfUSBConnections, "0 2"),
        gets("About.getNrOfSerialConnections", GetAbout, &About::getNrOfSerialConnections, "0 0"),
        text("About.getAddOnPCBSerial", &About::getAddOnPCBSerial),
        text("About.getAddOnPCBArt", &About::getAddOnPCBArt),
        text("About.getAddOnManufacturingDate", &About::getAddOnManufacturingDate),
        text("About.getAddOnHWversion", &About::getAddOnHWversion),
        gets("About.getIsWLANMounted", GetAbout, &About::getIsWLANMounted, "0 1"),
        gets("About.getIsGPSMounted", GetAbout, &About::getIsGPSMounted, "0 1"),
        gets("About.getIsGPRSMounted", GetAbout, &About::getIsGPRSMounted, "0 1"),
        gets("About.getIsBTMounted", GetAbout, &About::getIsBTMounted, "0 1"),
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

} // namespace conformance
