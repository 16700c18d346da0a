#pragma once

#include <optional>

// Worker bodies.

// Replies with the sizes of C:\hiberfil.sys, C:\pagefile.sys and C:\swapfile.sys (GetFileAttributesExW) and
// whether hibernation is on (HibernateEnabled in the registry).
void getSystemFilesAdvisor(int request_id);

// Has the helper service switch hibernation, off if `enabled` is missing; without the service the page is told.
void setHibernation(int request_id, std::optional<bool> enabled);
