"""The network: its training, growing and export."""
