//
// main.cpp
//
// Tool: fitool
//
// The fitool command: converts XML text to Fast Infoset and back, checks
// and lists Fast Infoset documents and compares sizes and speeds.
//


#include "Fitool.h"
#include <csignal>
#include <iostream>


int main(int argc, char** argv)
{
	// A reader that closes the pipe early ends fitool quietly, as it ends
	// other Unix tools, even when the caller ignored or blocked the signal.
	std::signal(SIGPIPE, SIG_DFL);
	sigset_t pipeSignal;
	sigemptyset(&pipeSignal);
	sigaddset(&pipeSignal, SIGPIPE);
	sigprocmask(SIG_UNBLOCK, &pipeSignal, 0);

	// fitool reads standard input through its stream buffer and never mixes
	// C and C++ output.
	std::ios::sync_with_stdio(false);
	Fitool::Fitool tool(std::cout, std::cerr);
	const int status = tool.run(std::vector<std::string>(argv + 1, argv + argc));
	std::cout.flush();
	return std::cout.good() ? status : (status ? status : Fitool::Fitool::EXIT_BAD_DOCUMENT);
}
