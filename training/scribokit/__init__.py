"""The model kit: draws pictures of printed text, trains readers on them and measures them."""
