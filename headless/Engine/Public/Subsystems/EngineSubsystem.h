#pragma once

#include "Subsystems/Subsystem.h"

class UEngineSubsystem : public UDynamicSubsystem
{
	DECLARE_HEADLESS_CLASS(UEngineSubsystem, UDynamicSubsystem)
};
