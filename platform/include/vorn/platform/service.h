#ifndef VORN_PLATFORM_SERVICE_H
#define VORN_PLATFORM_SERVICE_H

/**
 * @file
 * Where the name of a process's service comes from: `/proc/<pid>/cgroup` names the unit, and the
 * unit's file the service. Texts alone, as macros, to be joined with others.
 */

/** The hierarchy of control groups whose paths are made of units, as /proc/<pid>/cgroup calls it.
 */
#define VORN_UNIT_HIERARCHY "name=systemd"

/** The section of a unit's file that names the service, with the keys Name and NameI18n. */
#define VORN_UNIT_SECTION "X-Vornalis"

#endif
