#include "OutputFile.h"
#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/File.h"
#include "Poco/FileStream.h"
#include "Poco/Path.h"
#include "Poco/TemporaryFile.h"
#include <iostream>


namespace Fitool {


OutputFile::OutputFile(const std::string& path):
	_path(path == "-" ? std::string() : path)
{
	if (_path.empty())
	{
		_name = "(standard output)";
		return;
	}
	_name = _path;
	Poco::Path target(_path);
	target.makeAbsolute();
	const std::string folder = target.parent().toString();
	if (!Poco::File(folder).exists()) throw Ixor::FileNotFoundException("no folder " + folder);
	_temporaryPath = Poco::TemporaryFile::tempName(folder);
	_pFile.reset(new Poco::FileOutputStream(_temporaryPath, std::ios::out | std::ios::trunc | std::ios::binary));
}


OutputFile::~OutputFile()
{
	if (_temporaryPath.empty()) return;
	try
	{
		_pFile.reset();
		Poco::File(_temporaryPath).remove();
	}
	catch (...)
	{
	}
}


const std::string& OutputFile::name() const
{
	return _name;
}


std::ostream& OutputFile::stream()
{
	return _pFile ? *_pFile : std::cout;
}


void OutputFile::commit()
{
	stream().flush();
	if (!stream().good()) throw Ixor::IOException("cannot write the output");
	if (!_pFile) return;
	static_cast<Poco::FileOutputStream&>(*_pFile).close();
	if (!_pFile->good()) throw Ixor::IOException("cannot write the output");
	Poco::File(_temporaryPath).renameTo(_path);
	_temporaryPath.clear();
}


} // namespace Fitool
