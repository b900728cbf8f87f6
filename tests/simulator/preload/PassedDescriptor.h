// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// Passes a descriptor on over a Unix socket.
void sendDescriptor(int socket, int fd);
/// -1 when none comes.
int receiveDescriptor(int socket);
