"""What the companion programs of morvaltide share."""
