#pragma once

// TesselCmd run as a real child.

#include "ProgramRun.h"

inline FCommandRun RunTesselCmd(const FCommandSetup& Setup)
{
	return RunProgram(TESSEL_CMD, Setup);
}

inline FCommandRun RunTesselCmd(std::vector<std::string> Args, std::map<std::string, std::string> Environment = {})
{
	return RunTesselCmd(FCommandSetup{std::move(Args), std::move(Environment), std::string()});
}
