//
// main.cpp
//
// Tool: fitool
//
// The fitool command: converts XML text to Fast Infoset and back, lists
// Fast Infoset documents and compares sizes and speeds.
//


#include "Fitool.h"
#include <iostream>


int main(int argc, char** argv)
{
	// fitool reads standard input through its stream buffer and never mixes
	// C and C++ output.
	std::ios::sync_with_stdio(false);
	Fitool::Fitool tool(std::cout, std::cerr);
	const int status = tool.run(std::vector<std::string>(argv + 1, argv + argc));
	std::cout.flush();
	return std::cout.good() ? status : (status ? status : Fitool::Fitool::EXIT_BAD_DOCUMENT);
}
