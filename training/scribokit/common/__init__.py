"""What all rooms need: the alphabet, labels, the network's input, picture files, the processor."""
