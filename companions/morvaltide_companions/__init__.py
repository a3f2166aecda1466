"""What morvaltide-batch, morvaltide-mail and morvaltide-watch are made of, and
what morvaltide-prepare shares with them (VERSION and children)."""

# The version of the whole project, as set in CMakeLists.txt, for all companions.
VERSION = "1.0.0"
