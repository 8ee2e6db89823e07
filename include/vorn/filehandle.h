// SPDX-License-Identifier: MIT
#ifndef VORN_FILEHANDLE_H
#define VORN_FILEHANDLE_H

/**
 * @file
 * Which files on the data volumes are held open right now, by which process, on behalf of which
 * service, from which remote host and by which user.
 *
 * Rules that hold for everything here:
 *
 * - Ownership: the caller owns every list; the library keeps nothing between calls.
 * - Threads: none are started and no locks are taken. Calls on different lists may run at the
 *   same time, except VORNEnumOpenedFile, which changes the identities of the whole process.
 * - Errors: functions that return int give 0 (or more) on success and -1 on failure, write one
 *   line to the system log for each failing level and leave the reason in the platform's error
 *   code (KLIBCErrGet). A failure leaves the list as the failing step left it.
 * - Exceptions: none is thrown on purpose, but those of the standard library (std::bad_alloc
 *   among them) pass through. See PathBeginWithVolume for the one to guard against.
 * - Texts are bytes: paths and file names are what the kernel gives, in no particular encoding.
 */

#include <json/forwards.h>

#include <array>
#include <list>
#include <map>
#include <string>
#include <unordered_map>

#define VORN_FILEHANDLE_API __attribute__((visibility("default")))

namespace VORN {
namespace FileHandle {

/** The columns of a record. */
enum MEMBER {
    MEMBER_SERVICE = 0,
    MEMBER_PID = 1,
    MEMBER_USER = 2,
    MEMBER_HOST = 3,
    MEMBER_PATH = 4,
    MEMBER_FILENAME = 5,
    MEMBER_TIME = 6
};

/** What VORNEnumOpenedFile keeps. */
enum ENUM_BY {
    ENUM_BY_SHARE = 0, /**< files under a shared folder; the path column begins with its name */
    ENUM_BY_VOLUME = 1 /**< files under a mounted volume; the path column is the full path */
};

/**
 * One file that one process holds open on a volume.
 *
 * A plain value. Each setter refuses an empty text: it then leaves the field as it was, writes a
 * line to the system log, sets the error code 0x0D00 and returns -1; otherwise it returns 0.
 */
class VORN_FILEHANDLE_API OpenedFile {
public:
    /** Orders records by a column, then by the text of the pid. */
    class VORN_FILEHANDLE_API Compare {
    public:
        /**
         * @param column     a text of mapJsonColumn; every other text ("time" among them) means
         *                   "filename"
         * @param ascending  false turns the test round, also for records that are equal
         */
        Compare(const std::string& column, bool ascending);
        /** Whether a comes before b. Texts are compared byte by byte, pids as well. */
        bool operator()(const OpenedFile& a, const OpenedFile& b);

    private:
        MEMBER column_;
        bool ascending_;
    };

    /** Names of the columns 0 to 5. The time column has none and can't be sorted by. */
    static const std::map<int, std::string> mapJsonColumn;

    /** Process id as decimal text, as `/proc` names it. Any text that isn't empty is taken. */
    int setPid(const std::string& strPid);
    /** The same for a text from outside: refused unless it is a number of up to 2147483647. */
    int setAndCheckPid(const std::string& strPid);
    /** Target of the descriptor's link in `/proc/<pid>/fd`. */
    int setFullPath(const std::string& path);
    /** Path as users know it: from the share's name on, or the full path. */
    int setPath(const std::string& path);
    /** Display name of the service that the process belongs to. */
    int setServiceName(const std::string& serviceName);
    /** Remote host of the client connection that the process serves, or "-". */
    int setHost(const std::string& host);
    /** User of that connection, or "-". */
    int setUser(const std::string& user);
    /** Last component of the path. */
    int setFilename(const std::string& filename);
    /** Last access time, local, as "2024/03/07 14:05:09". */
    int setTime(const std::string& strTime);
    /** The file lies inside a hidden folder. Can't be taken back. */
    void setIsHidden();
    /** The open object is a folder. Can't be taken back. */
    void setIsFolder();

    std::string getPidStr();
    std::string getService();
    std::string getUser();
    std::string getHost();
    std::string getPath();
    std::string getFilename();
    std::string getFullPath();
    std::string getTime();
    bool isHidden();
    bool isFolder();

    /** Whether a column equals a text. True for an empty text. */
    bool isMatchSame(const std::string& text, MEMBER member);
    /**
     * Whether a column contains a text, in any case of what `toupper` knows as letters: ASCII, and
     * under an LC_CTYPE of single bytes its own as well. True for an empty text.
     */
    bool isMatchKeyword(const std::string& text, MEMBER member);

    /**
     * Assigns "service", "pid", "user", "host", "path" and "filename" as strings and "hidden" as
     * the integer 0 or 1. Other members of out stay.
     */
    void toJson(Json::Value& out);
    /** Assigns "time" as a string. */
    void timeToJson(Json::Value& out);

private:
    friend struct RecordTexts;

    bool hidden_ = false;
    bool folder_ = false;
    std::string fullPath_;
    std::array<std::string, MEMBER_TIME + 1> columns_;
};

/**
 * Fills a list with every file that a process holds open on a volume, complete with service,
 * connection and flags, in the order of the path column, one record a process and file.
 *
 * Runs EnumOpenedFile with the effective user and group 0 and restores the caller's identities.
 * When they can't be raised, the enumeration sees what the caller may see. Afterwards errno is 0,
 * or EPERM when the identities could not be restored. An exception leaves them raised.
 *
 * @param list    empty; records that are in it already take part in every step
 * @param enumby  ENUM_BY_SHARE or ENUM_BY_VOLUME, anything else fails
 */
VORN_FILEHANDLE_API int VORNEnumOpenedFile(std::list<OpenedFile>& list, int enumby);

/** The same with the identities that the process has. */
VORN_FILEHANDLE_API int EnumOpenedFile(std::list<OpenedFile>& list, int enumby);

/**
 * Sorts a list by a column of OpenedFile::mapJsonColumn; any other text means "filename".
 * Descending order also turns round the order of records that are equal in column and pid.
 */
VORN_FILEHANDLE_API void VORNSortOpenedFile(std::list<OpenedFile>& list, std::string column,
                                            bool ascending);

/**
 * Sets the last access time of every record (`stat`, st_atime, local time zone) with the caller's
 * own identities. Records whose file can't be examined any more are erased.
 */
VORN_FILEHANDLE_API int VORNGetLastAccessTime(std::list<OpenedFile>& list);

/**
 * Appends the display names of the services that can be asked to disconnect their clients, in
 * the order of gszKickableServiceTable. A service without a name is left out, with a log line.
 */
VORN_FILEHANDLE_API void GetKickableServiceList(std::list<std::string>& services);

/** Unit names of the kickable services. */
VORN_FILEHANDLE_API extern const char* const gszKickableServiceTable[5];

/** @name The steps of EnumOpenedFile, in its order. @{ */

/** Appends a record for each descriptor (`/proc/<pid>/fd/<n>`, n > 0) that points into a volume. */
VORN_FILEHANDLE_API int GetProcOpenedFileInVolume(std::list<OpenedFile>& list);

/** Erases what is under no shared folder (or volume) and sets path and file name of the rest. */
VORN_FILEHANDLE_API int FilterPath(std::list<OpenedFile>& list, int enumby);

/**
 * Sets the service: the display name of the unit that stands first in the process's path in the
 * `name=systemd` hierarchy (`/proc/<pid>/cgroup`), or the text for an internal service.
 */
VORN_FILEHANDLE_API int GetServiceName(std::list<OpenedFile>& list);

/**
 * Sets host and user from the client connection of the process or, for SSH, of an ancestor; "-"
 * where there is none.
 */
VORN_FILEHANDLE_API int UpdateConnectionInfo(std::list<OpenedFile>& list);

/** Keeps the first of neighbours with the same full path and pid. Always returns 0. */
VORN_FILEHANDLE_API int EraseAdjacentDuplicates(std::list<OpenedFile>& list);

/** Marks records whose full path contains a hidden directory of the platform. */
VORN_FILEHANDLE_API int LabelHidden(std::list<OpenedFile>& list);

/** Marks records whose full path is a directory. Always returns 0. */
VORN_FILEHANDLE_API int LabelFolder(std::list<OpenedFile>& list);

/** @} */

/** @name Tests and look-ups that the steps are made of. @{ */

/**
 * Whether a path lies under a volume: "/volume", at least one more byte, and a "/" behind that.
 *
 * @throws std::out_of_range for exactly "/volume". A process whose descriptor points at an object
 *         of that name makes the whole enumeration throw; a caller who can't rule that out
 *         catches it around VORNEnumOpenedFile and restores the effective ids that it had before
 *         (setegid, then seteuid: the group first, as long as the user is root).
 */
VORN_FILEHANDLE_API bool PathBeginWithVolume(const std::string& path);

/** Whether a name begins with a decimal number other than 0. */
VORN_FILEHANDLE_API bool IsNumericalDir(std::string name);

/** Whether a text is digits alone and at most 2147483647. */
VORN_FILEHANDLE_API bool IsValidNumber(const std::string& text);

/**
 * Display name of a unit: key Name in section X-Vornalis of its unit file under
 * /usr/local/lib/systemd/system/ or, failing that, /usr/lib/systemd/system/.
 */
VORN_FILEHANDLE_API bool NameGet(const std::string& unit, std::string& name);

/**
 * Localised display name of a unit: the text that the key NameI18n refers to as "bundle:key".
 *
 * @param cache  texts by reference, looked up first and filled; may be empty
 * @throws std::logic_error when the platform's bundle gives a null text
 */
VORN_FILEHANDLE_API bool NameI18nGet(const std::string& unit, std::string& name,
                                     std::unordered_map<std::string, std::string>& cache);

/** @} */

}  // namespace FileHandle
}  // namespace VORN

#endif
