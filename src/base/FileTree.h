#pragma once

#include <QByteArray>
#include <QString>

#include <expected>
#include <filesystem>
#include <functional>
#include <system_error>

class QFile;
class QFileDevice;

// Folders with everything in them, and files as they are to end up on the disk. From any thread; on a QThread whose
// interruption is requested, what goes through folders fails with "interrupted", but for removeTree().
namespace pelloran::FileTree {

struct Error {
    QString description; // such as "cannot write /a/b: No space left on device"

    bool operator==(const Error&) const = default;
};

using Done = std::expected<void, Error>;

std::filesystem::path native(const QString& path);

// What the system says of `doing`, such as "write", to `path`.
Done checked(const std::error_code& error, const QString& doing, const QString& path);

// Links that lead nowhere are there too, and so is what cannot be looked at.
bool exists(const QString& path);

// Why nothing could be made or written at `path`, in a few words; empty when it could. Nothing is tried.
QString obstacleTo(const QString& path);

// With those above. A folder that is there is fine.
Done makeFolders(const QString& path);

// With those above, and a new one for us alone, whatever the user allows others on new folders. One that is there
// already, or a link of that name, is an error: it may be anybody's.
Done makePrivateFolder(const QString& path);

// With everything in it, folders that may not be written included. What is not there is fine.
Done removeTree(const QString& path);

// Opens a file to be read. Nothing but a regular one: a pipe would be waited for, without end. The error is the reason
// alone, such as "Permission denied".
Done openToRead(QFile& file);

// All of a regular file of at most `most` bytes.
std::expected<QByteArray, Error> read(const QString& path, qint64 most);

// The whole content in one step, or what was there before.
Done writeAtomically(const QString& path, const QByteArray& bytes);

// All of it, to an open file, from where that stands. What fails has its reason, also where that is a full disk.
Done write(QFileDevice& file, const QByteArray& bytes);

// Files and folders, which is all that `from` may hold, with the permissions of any new ones. `to` is not there. Of a
// file that fails no half is left.
Done copyTree(const QString& from, const QString& to);

// Calls `each` with every name in a folder, until one fails.
Done forEachNameIn(const QString& folder, const std::function<Done(const QString& name)>& each);

// Removes a folder when it goes out of scope. Logs where it cannot.
class Removal {
public:
    explicit Removal(const QString& folder);
    ~Removal();

    Removal(const Removal&) = delete;
    Removal& operator=(const Removal&) = delete;

private:
    QString path;
};

} // namespace pelloran::FileTree
