"""Draws labelled pictures of printed lines."""
