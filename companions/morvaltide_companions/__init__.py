"""What morvaltide-batch, morvaltide-mail and morvaltide-watch are made of."""

# The version of the whole project, as set in CMakeLists.txt.
VERSION = "1.0.0"
