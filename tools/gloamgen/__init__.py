"""Builds the shipped data set of Gloamhold (gloamhold_data/) from the sources in this package."""
