"""Turns any document into a file that morvaltide converts best."""
