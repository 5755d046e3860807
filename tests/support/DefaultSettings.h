#pragma once

#include <string>

namespace cqsurvey {

/// The settings file of a new job.
inline const std::string kDefaultSettings =
    "[SETTINGS]\r\n"
    "SiPointSize=5.000\r\n"
    "JCoordDivision=0\r\n"
    "Version=1.00\r\n"
    "Mapscale=500\r\n"
    "[BACKGROUND]\r\n"
    "EntityColor=-1\r\n"
    "Type=0\r\n"
    "CenterX=0\r\n"
    "CenterY=0\r\n"
    "SizeX=0\r\n"
    "SizeY=0\r\n"
    "Rotation=0\r\n"
    "Brightness=0\r\n"
    "Contrast=100\r\n"
    "Monotone=0\r\n"
    "BKColor=16777215\r\n";

}  // namespace cqsurvey
