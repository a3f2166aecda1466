"""What morvaltide-batch, morvaltide-mail and morvaltide-watch are made of."""
