#pragma once

/// How the LED service logs.
namespace ledlog {

constexpr char CATEGORY[] = "DB_FRAMEWORK";
constexpr int ERROR = 3;
constexpr int TRACE = 7;

} // namespace ledlog
