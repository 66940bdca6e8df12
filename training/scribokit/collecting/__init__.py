"""Collects the pictures that a line has archived, and has their labels corrected."""
