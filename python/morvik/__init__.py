"""What stands beside the interpreter for people: signs for private bytes, and a prompt."""
