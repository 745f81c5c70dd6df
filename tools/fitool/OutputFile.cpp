#include "OutputFile.h"
#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/BufferedStreamBuf.h"
#include "Poco/Path.h"
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>


namespace Fitool {


namespace
{
	const int MAX_LINKS = 40;   // as the kernel follows them


	std::string systemError(int error)
	{
		return std::strerror(error);
	}


	std::string folderOf(const std::string& path)
	{
		const std::string::size_type slash = path.rfind('/');
		if (slash == std::string::npos) return ".";
		return slash == 0 ? "/" : path.substr(0, slash);
	}


	bool isDescriptorLink(const std::string& path)
		/// True for /proc/PID/fd/N and what leads there (/dev/stdout,
		/// /dev/fd/N): such a link names a descriptor that is open already,
		/// and its target must not be replaced.
	{
		char folder[PATH_MAX];
		return realpath(folderOf(path).c_str(), folder) && std::strncmp(folder, "/proc/", 6) == 0;
	}


	std::string followLinks(const std::string& path, bool& descriptorLink)
		/// The file that path names in the end (which need not exist).
	{
		std::string current = path;
		for (int hops = 0; hops < MAX_LINKS; ++hops)
		{
			struct stat status;
			if (lstat(current.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return current;
			if (isDescriptorLink(current))
			{
				descriptorLink = true;
				return current;
			}
			char target[PATH_MAX];
			const ssize_t length = readlink(current.c_str(), target, sizeof(target) - 1);
			if (length < 0) return current;
			const std::string next(target, static_cast<std::size_t>(length));
			current = next[0] == '/' ? next : folderOf(current) + "/" + next;
		}
		throw Poco::FileException(systemError(ELOOP));
	}


	unsigned newFileMode()
	{
		const mode_t mask = umask(0);
		umask(mask);
		return 0666 & ~mask;
	}
}


class OutputFile::DescriptorBuffer: public Poco::BufferedStreamBuf
	/// Writes to a descriptor in large blocks and counts what it wrote.
{
public:
	explicit DescriptorBuffer(int descriptor):
		Poco::BufferedStreamBuf(BLOCK_SIZE, std::ios::out),
		_descriptor(descriptor),
		_written(0),
		_error(0)
	{
	}

	~DescriptorBuffer()
	{
		try
		{
			sync();
		}
		catch (...)
		{
		}
	}

	Poco::UInt64 written() const
	{
		return _written;
	}

	int error() const
	{
		return _error;
	}

protected:
	int writeToDevice(const char* buffer, std::streamsize length)
	{
		std::streamsize done = 0;
		while (done < length)
		{
			const ssize_t n = ::write(_descriptor, buffer + done, static_cast<std::size_t>(length - done));
			if (n < 0 && errno == EINTR) continue;
			if (n <= 0)
			{
				_error = n < 0 ? errno : EIO;
				return -1;
			}
			done += n;
		}
		_written += static_cast<Poco::UInt64>(done);
		return static_cast<int>(done);
	}

private:
	static const std::streamsize BLOCK_SIZE = 65536;

	int          _descriptor;
	Poco::UInt64 _written;
	int          _error;
};


OutputFile::OutputFile(const std::string& path, bool replace):
	_replace(replace),
	_descriptor(STDOUT_FILENO),
	_ownsDescriptor(false)
{
	if (path.empty() || path == "-")
	{
		_name = "(standard output)";
	}
	else
	{
		_name = path;
		bool descriptorLink = false;
		const std::string target = followLinks(path, descriptorLink);
		struct stat status;
		const bool exists = stat(target.c_str(), &status) == 0;
		// Appending keeps what the shell wrote before through a descriptor
		// (">>"); after ">" the file is empty anyway.
		if (descriptorLink) openDirectly(path, true);
		else if (exists && !S_ISREG(status.st_mode)) openDirectly(path, false);
		else createTemporary(target, exists, exists ? status.st_mode & 07777 : newFileMode());
	}
	_pBuffer.reset(new DescriptorBuffer(_descriptor));
	_pStream.reset(new std::ostream(_pBuffer.get()));
}


OutputFile::~OutputFile()
{
	_pStream.reset();
	_pBuffer.reset();
	if (_ownsDescriptor) close(_descriptor);
	if (!_temporaryPath.empty()) unlink(_temporaryPath.c_str());
}


void OutputFile::openDirectly(const std::string& path, bool append)
{
	_descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | (append ? O_APPEND : 0));
	if (_descriptor < 0) throw Poco::OpenFileException(systemError(errno));
	_ownsDescriptor = true;
}


void OutputFile::createTemporary(const std::string& path, bool exists, unsigned mode)
{
	if (exists && !_replace) throw Poco::FileExistsException("use -f (--force) to replace it");
	const std::string folder = folderOf(path);
	struct stat status;
	if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
		throw Ixor::FileNotFoundException("no folder " + Poco::Path(_name).parent().toString());
	std::string name = folder + "/." + Poco::Path(path).getFileName() + ".XXXXXX";
	_descriptor = mkostemp(&name[0], O_CLOEXEC);
	if (_descriptor < 0)
	{
		_descriptor = STDOUT_FILENO;
		throw Poco::CreateFileException(systemError(errno));
	}
	_ownsDescriptor = true;
	_temporaryPath = name;
	_path = path;
	if (fchmod(_descriptor, static_cast<mode_t>(mode)) != 0) throw Poco::FileException(systemError(errno));
}


const std::string& OutputFile::name() const
{
	return _name;
}


std::ostream& OutputFile::stream()
{
	return *_pStream;
}


bool OutputFile::isTerminal() const
{
	return isatty(_descriptor) == 1;
}


Poco::UInt64 OutputFile::octetsWritten() const
{
	return _pBuffer->written();
}


void OutputFile::commit()
{
	_pStream->flush();
	if (!_pStream->good()) throw Ixor::IOException("cannot write the output: " + systemError(_pBuffer->error()));
	if (!_ownsDescriptor) return;
	_ownsDescriptor = false;
	if (close(_descriptor) != 0) throw Ixor::IOException("cannot write the output: " + systemError(errno));
	if (_temporaryPath.empty()) return;
	if (_replace)
	{
		if (rename(_temporaryPath.c_str(), _path.c_str()) != 0) throw Poco::FileException(systemError(errno));
	}
	else if (renameat2(AT_FDCWD, _temporaryPath.c_str(), AT_FDCWD, _path.c_str(), RENAME_NOREPLACE) != 0)
	{
		// Without the no-replace rename, a hard link fails as well when
		// the name is taken.
		if (errno == EEXIST) throw Poco::FileExistsException("use -f (--force) to replace it");
		if ((errno != EINVAL && errno != ENOSYS) || link(_temporaryPath.c_str(), _path.c_str()) != 0)
		{
			if (errno == EEXIST) throw Poco::FileExistsException("use -f (--force) to replace it");
			throw Poco::FileException(systemError(errno));
		}
		unlink(_temporaryPath.c_str());
	}
	_temporaryPath.clear();
}


} // namespace Fitool
