//
// OutputFile.h
//
// Tool: fitool
// Module: OutputFile
//


#ifndef Fitool_OutputFile_INCLUDED
#define Fitool_OutputFile_INCLUDED


#include <iosfwd>
#include <memory>
#include <string>


namespace Fitool {


class OutputFile
	/// The output of a command: a file, or standard output for "" and "-".
	///
	/// A file is written under a temporary name in its folder and renamed
	/// to its own name by commit(), so that a failed conversion never
	/// leaves a partial file behind, and the output may even be the input.
	/// Standard output is written as the data come.
{
public:
	explicit OutputFile(const std::string& path);
		/// Creates the temporary file. Throws Ixor::FileNotFoundException
		/// when the folder does not exist, and the host's file exceptions
		/// when the file cannot be created.

	~OutputFile();
		/// Removes the temporary file unless commit() succeeded.

	const std::string& name() const;
		/// The path, or "(standard output)".

	std::ostream& stream();

	void commit();
		/// Flushes the output and gives the file its name. Throws
		/// Ixor::IOException when the data cannot be written, and the
		/// host's file exceptions when the rename fails.

private:
	OutputFile(const OutputFile&);
	OutputFile& operator = (const OutputFile&);

	std::string                   _name;
	std::string                   _path;
	std::string                   _temporaryPath;
	std::unique_ptr<std::ostream> _pFile;
};


} // namespace Fitool


#endif // Fitool_OutputFile_INCLUDED
