/** Returns the text in lower case without accents: "cisteni" finds "Čištění". */
export function fold(text: string): string {
  const plain = /^[\0-\x7f]*$/.test(text) ? text : text.normalize('NFD').replace(/\p{M}/gu, '');
  return plain.toLowerCase();
}
