"""Turns any document into a file that morvaltide converts best."""

# The version of the whole project, as set in CMakeLists.txt.
VERSION = "1.0.0"
