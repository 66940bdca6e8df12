"""Reads labelled pictures with a model or another program, and counts what is right."""
