//
// Replay.cpp
//
// A main for the fuzz targets where libFuzzer is not available: runs the
// target once on every file named on the command line and on every file
// below every directory named there. A finding aborts, as under libFuzzer.
//


#include "Poco/File.h"
#include "Poco/RecursiveDirectoryIterator.h"
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);


namespace {


void collect(const std::string& name, std::vector<std::string>& files)
{
	Poco::File file(name);
	if (!file.isDirectory())
	{
		files.push_back(name);
		return;
	}
	Poco::SimpleRecursiveDirectoryIterator end;
	for (Poco::SimpleRecursiveDirectoryIterator it(file); it != end; ++it)
	{
		if (it->isFile()) files.push_back(it->path());
	}
}


} // namespace


int main(int argc, char** argv)
{
	std::vector<std::string> files;
	for (int i = 1; i < argc; ++i) collect(argv[i], files);
	std::sort(files.begin(), files.end());
	if (files.empty())
	{
		std::cerr << "usage: " << argv[0] << " FILE-OR-DIRECTORY...\n";
		return 2;
	}
	for (const std::string& path: files)
	{
		std::ifstream in(path, std::ios::binary);
		const std::string input((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
		if (!in.good() && !in.eof())
		{
			std::cerr << path << ": cannot read\n";
			return 1;
		}
		std::cerr << "running " << path << " (" << input.size() << " octets)\n";
		LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
	}
	std::cerr << files.size() << " inputs ran\n";
	return 0;
}
