//
// OutputFile.h
//
// Tool: fitool
// Module: OutputFile
//


#ifndef Fitool_OutputFile_INCLUDED
#define Fitool_OutputFile_INCLUDED


#include "Poco/Types.h"
#include <iosfwd>
#include <memory>
#include <string>


namespace Fitool {


class OutputFile
	/// The output of a command: a file, or standard output for "" and "-".
	///
	/// A regular file, or one that does not exist yet, is written under a
	/// temporary name in its folder and renamed to its own name by
	/// commit(), so that a failed conversion never leaves a partial file
	/// behind and the output may even be the input. The temporary file is
	/// created exclusively under an unpredictable name and gets the mode of
	/// the file it replaces (a new file: 0666 less the umask). A symbolic
	/// link is followed and its target replaced. Anything else (a FIFO, a
	/// device such as /dev/null, a link to an open descriptor such as
	/// /dev/stdout) is written directly, as standard output is. Messages
	/// never name the temporary file.
{
public:
	OutputFile(const std::string& path, bool replace);
		/// Opens the output. With replace false an existing file is not
		/// replaced: Poco::FileExistsException, here or from commit().
		/// Throws Ixor::FileNotFoundException when the folder does not
		/// exist, and the host's file exceptions when the file cannot be
		/// created.

	~OutputFile();
		/// Removes the temporary file unless commit() succeeded.

	const std::string& name() const;
		/// The path, or "(standard output)".

	std::ostream& stream();

	bool isTerminal() const;

	Poco::UInt64 octetsWritten() const;

	void commit();
		/// Flushes the output and gives the file its name. Throws
		/// Ixor::IOException when the data cannot be written, and the
		/// host's file exceptions when the rename fails.

private:
	OutputFile(const OutputFile&);
	OutputFile& operator = (const OutputFile&);

	class DescriptorBuffer;

	void openDirectly(const std::string& path, bool append);
	void createTemporary(const std::string& path, bool exists, unsigned mode);

	std::string                       _name;
	std::string                       _path;          // the file that commit() replaces
	std::string                       _temporaryPath;
	bool                              _replace;
	int                               _descriptor;
	bool                              _ownsDescriptor;
	std::unique_ptr<DescriptorBuffer> _pBuffer;
	std::unique_ptr<std::ostream>     _pStream;
};


} // namespace Fitool


#endif // Fitool_OutputFile_INCLUDED
