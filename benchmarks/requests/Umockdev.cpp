// SPDX-License-Identifier: LicenseRef-HXAux
// The same requests to a device that umockdev simulates, for comparison: umockdev-wrapper hx-bench-umockdev-request
// [MILLISECONDS]
#include "benchmarks/requests/Requests.h"

#include <cstdio>
#include <sys/wait.h>
#include <umockdev.h>
#include <unistd.h>

namespace {

constexpr char kDevice[] = "P: /devices/adc-id\nN: adc-id\nE: SUBSYSTEM=misc\nE: DEVNAME=/dev/adc-id\n";
constexpr unsigned long kGetRegister = 0xC004003A;

/// Leaves the block as it is: every register is 0.
gboolean answer(UMockdevIoctlBase* /*base*/, UMockdevIoctlClient* client, gpointer /*data*/)
{
    if (umockdev_ioctl_client_get_request(client) != kGetRegister)
        return FALSE;
    UMockdevIoctlData* const block = umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, 4, nullptr);
    umockdev_ioctl_data_update(block, 2, block->data + 2, 2);
    g_object_unref(block);
    umockdev_ioctl_client_complete(client, 0, 0);
    return TRUE;
}

int failed(const char* what, const GError* error)
{
    std::fprintf(stderr, "%s: %s\n", what, error == nullptr ? "" : error->message);
    return 2;
}

} // namespace

int main(int count, char** words)
{
    GError* error = nullptr;
    UMockdevTestbed* const testbed = umockdev_testbed_new();
    if (umockdev_testbed_add_from_string(testbed, kDevice, &error) == FALSE)
        return failed("umockdev does not add the device", error);
    UMockdevIoctlBase* const handler = umockdev_ioctl_base_new();
    g_signal_connect(handler, "handle-ioctl", G_CALLBACK(answer), nullptr);
    if (umockdev_testbed_attach_ioctl(testbed, "/dev/adc-id", handler, &error) == FALSE)
        return failed("umockdev does not attach the handler", error);
    std::fflush(stdout);
    const pid_t child = fork(); // a program of its own, as on a unit
    if (child == 0) {
        if (count > 1)
            measureFirstRequest(words[1]);
        else
            measureRequests("umockdev");
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    g_object_unref(testbed);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
